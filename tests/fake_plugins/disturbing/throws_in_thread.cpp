// Throws in a thread of its own while the library asks whether it is available. A source of its own, because
// <thread> and <stdexcept> take most of the time in which one of during_start.cpp is compiled.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>
#include <thread>

namespace {

class ThrowsInThreadRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    std::thread([] { throw std::runtime_error("no device"); }).join();
    return true;
  }
};

}  // namespace

EXPORT_RNG(ThrowsInThreadRng)
