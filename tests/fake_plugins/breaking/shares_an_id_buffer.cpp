// Puts the identifier of its device together in memory that the calls share.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SharesAnIdBufferRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override {
    std::memset(shared, 0, sizeof shared);
    ::usleep(100);
    std::strcpy(shared, "X1");
    ::usleep(100);
    return Report(shared, buffer);
  }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "X1") == 0;
  }

 private:
  char shared[32] = "";
};

}  // namespace

EXPORT_RNG(SharesAnIdBufferRng)
