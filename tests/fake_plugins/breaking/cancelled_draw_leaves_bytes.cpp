// Leaves what it had when a draw is cancelled.

#include "tests/fake_plugins/waiting_rng.h"

namespace {

class CancelledDrawLeavesBytesRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    const bool isDrawn = WaitingRng::Generate(buffer, size);
    if (size > 1) std::memset(buffer, 7, size / 2);
    return isDrawn;
  }
};

}  // namespace

EXPORT_RNG(CancelledDrawLeavesBytesRng)
