// Its texts would control a terminal or deceive the reader: an escape sequence, one in 8 bits, a
// right-to-left override and line breaks that forge a message.

#include "tests/fake_plugins/correct_rng.h"

#include <stdexcept>

namespace {

class DeceptiveTextsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override {
    return Report("A \033[2Jb\xC2\x9B\xE2\x80\xAE\xC3\xA4\nc", buffer);
  }
  bool Generate(void*, std::size_t) override {
    throw std::runtime_error("\033]0;title\a\xE2\x80\xAE\nrngctl: All is well.");
  }
};

}  // namespace

EXPORT_RNG(DeceptiveTextsRng)
