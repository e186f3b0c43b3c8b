// Every second draw fails, and leaves what it had.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FailedDrawLeavesBytesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    CorrectRng::Generate(buffer, size);
    isFailing = !isFailing;
    return size == 0 || isFailing;
  }

 private:
  bool isFailing = false;
};

}  // namespace

EXPORT_RNG(FailedDrawLeavesBytesRng)
