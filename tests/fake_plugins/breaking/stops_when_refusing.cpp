// Closes its device when SelectDevice is called with an unknown one.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class StopsWhenRefusingRng final : public CorrectRng {
 public:
  bool SelectDevice(const char* hardwareId) override {
    isOpen = CorrectRng::SelectDevice(hardwareId);
    return isOpen;
  }
  bool Generate(void* buffer, std::size_t size) override {
    if (isOpen) return CorrectRng::Generate(buffer, size);
    if (size != 0) std::memset(buffer, 0, size);
    return size == 0;
  }

 private:
  bool isOpen = true;
};

}  // namespace

EXPORT_RNG(StopsWhenRefusingRng)
