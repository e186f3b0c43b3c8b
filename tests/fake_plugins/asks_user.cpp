// Asks the user something when it draws, without a line break, and waits for the answer.

#include "tests/fake_plugins/waiting_rng.h"

#include <cstdio>

namespace {

class AsksUserRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != 0) std::fputs("Press the button: ", stderr);
    return WaitingRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(AsksUserRng)
