// Breaks nothing; says that its draws may wait, and every hundredth draw of a process does.

#include "tests/fake_plugins/waiting_rng.h"

#include <string>

namespace {

class WaitsNowAndThenRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0 || CountDraw() % 100 != 0) return CorrectRng::Generate(buffer, size);
    return WaitingRng::Generate(buffer, size);
  }

 private:
  // Outlives the library, and is changed in place: the environment never frees what it replaces.
  static int CountDraw() {
    static std::mutex counting;
    const std::lock_guard guard(counting);
    constexpr char kName[] = "RNG_FAKE_DRAWS";
    ::setenv(kName, "000000", 0);
    char* const text = std::getenv(kName);
    const std::string count = std::to_string(1000001 + std::atoi(text));
    std::memcpy(text, count.c_str() + 1, 6);
    return std::atoi(text);
  }
};

}  // namespace

EXPORT_RNG(WaitsNowAndThenRng)
