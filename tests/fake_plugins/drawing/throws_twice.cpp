// Its second and third draws throw. The text of the third has control characters and is not UTF-8.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>

namespace {

class ThrowingRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    switch (++draws) {
      case 2:
        throw std::runtime_error("draw 2");
      case 3:
        throw std::runtime_error("draw 3 \033[2J\xE2\x80\xAE\xFF");
      default:
        return CorrectRng::Generate(buffer, size);
    }
  }

 private:
  int draws = 0;
};

}  // namespace

EXPORT_RNG(ThrowingRng)
