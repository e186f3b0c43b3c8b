// A draw that is cancelled pretends to be drawn.

#include "tests/fake_plugins/waiting_rng.h"

namespace {

class CancelledDrawSucceedsRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    WaitingRng::Generate(buffer, size);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(CancelledDrawSucceedsRng)
