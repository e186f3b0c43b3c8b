// Starts anew for every draw.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class RepeatsDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    for (std::size_t i = 0; i < size; ++i) static_cast<char*>(buffer)[i] = static_cast<char>(3 * i);
    return true;
  }
};

}  // namespace

EXPORT_RNG(RepeatsDrawsRng)
