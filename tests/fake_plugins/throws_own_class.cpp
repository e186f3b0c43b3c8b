// Throws an exception whose class lives in the plug-in: at the start, or in a draw where
// RNG_THROW_IN_DRAW is set. Its text would control a terminal where RNG_THROW_CONTROLS is set; it may be null.

#include "tests/fake_plugins/correct_rng.h"

#include <exception>

namespace {

class Fault : public std::exception {
 public:
  const char* what() const noexcept override {
    if (std::getenv("RNG_THROW_NULL")) return nullptr;
    return std::getenv("RNG_THROW_CONTROLS") ? "\033[2Ja\nfault\xFF" : "a fault of its own";
  }
};

class ThrowsOwnClassRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (!std::getenv("RNG_THROW_IN_DRAW")) throw Fault();
    return true;
  }
  bool Generate(void*, std::size_t) override { throw Fault(); }
};

}  // namespace

EXPORT_RNG(ThrowsOwnClassRng)
