// Reports another name once each of four operations has been called by two threads at the same time.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class NoticesCompanyRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    for (const bool isShared : wasShared) {
      if (!isShared) return CorrectRng::GetName(buffer);
    }
    return Report("crowd", buffer);
  }
  std::uint32_t GetFlags() override {
    Stay(0);
    return CorrectRng::GetFlags();
  }
  bool SelectDevice(const char* hardwareId) override {
    Stay(1);
    return CorrectRng::SelectDevice(hardwareId);
  }
  bool IsAvailable() override {
    Stay(2);
    return true;
  }
  bool SelfTest() override {
    Stay(3);
    return true;
  }

 private:
  void Stay(int operation) {
    if (__atomic_add_fetch(&callers[operation], 1, __ATOMIC_SEQ_CST) > 1) {
      wasShared[operation] = true;
    }
    ::usleep(100);
    __atomic_sub_fetch(&callers[operation], 1, __ATOMIC_SEQ_CST);
  }

  int callers[4] = {};
  volatile bool wasShared[4] = {};
};

}  // namespace

EXPORT_RNG(NoticesCompanyRng)
