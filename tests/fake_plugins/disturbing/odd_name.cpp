// Reports an odd name: the macro ODDITY says which.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdint>
#include <string>

namespace {

struct OddName {
  std::string text;
  std::size_t size;
};

[[maybe_unused]] OddName Megabyte() { return {std::string(1000000, 'x'), 1000001}; }
[[maybe_unused]] OddName WithoutEnd() { return {KIND, std::strlen(KIND)}; }
[[maybe_unused]] OddName WithPadding() { return {KIND, 100}; }
[[maybe_unused]] OddName NotUtf8() { return {"\377\376" KIND, sizeof KIND + 2}; }
[[maybe_unused]] OddName WithBlank() { return {KIND " ", sizeof KIND + 1}; }
[[maybe_unused]] OddName WithEscapes() { return {"\033[31m" KIND "\r\n", sizeof KIND + 7}; }

class OddNameRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    const OddName name = ODDITY();
    if (buffer) std::memcpy(buffer, name.text.data(), name.text.size());
    return static_cast<std::int32_t>(name.size);
  }
};

}  // namespace

EXPORT_RNG(OddNameRng)
