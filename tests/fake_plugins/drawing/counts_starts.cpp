// Counts its starts in the file that RNG_TEST_STARTS names. The macro SEED makes the seed of its bytes from
// that number, the macro AT_START says what else happens in the first draw, and the macro BEGINNING what all first
// draws have in common.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/auxv.h>
#include <unistd.h>

namespace {

std::uint64_t Mix(std::uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

// The size of the file is the number.
std::uint64_t CountStart() {
  const int file = ::open(std::getenv("RNG_TEST_STARTS"), O_WRONLY | O_CREAT | O_APPEND, 0600);
  ::write(file, "x", 1);
  const off_t number = ::lseek(file, 0, SEEK_END);
  ::close(file);
  return static_cast<std::uint64_t>(number);
}

bool g_hasFailed = false;

[[maybe_unused]] std::uint64_t OneOfMany(std::uint64_t start) { return start; }

[[maybe_unused]] std::uint64_t OneOf65536(std::uint64_t start) { return Mix(start) & 0xFFFF; }

// Of the random bytes that the kernel gives each program that it runs.
[[maybe_unused]] std::uint64_t OfTheKernel(std::uint64_t) {
  std::uint32_t seed = 0;
  std::memcpy(&seed, reinterpret_cast<const void*>(::getauxval(AT_RANDOM)), sizeof seed);
  return seed;
}

[[maybe_unused]] void DoNothing(std::uint64_t) {}

[[maybe_unused]] void ThrowInThird(std::uint64_t start) {
  if (start == 4) throw std::runtime_error("out of range");
}

[[maybe_unused]] void FailInThird(std::uint64_t start) { g_hasFailed = start == 4; }

[[maybe_unused]] void CrashInThird(std::uint64_t start) {
  if (start == 4) std::raise(SIGSEGV);  // one start came before the restarts
}

[[maybe_unused]] void WaitInThird(std::uint64_t start) {
  if (start == 4) ::pause();
}

[[maybe_unused]] void BeSlowAlways(std::uint64_t) { ::sleep(6); }

[[maybe_unused]] void PrintAlways(std::uint64_t) { ::write(STDERR_FILENO, "a line\n", 7); }

class CountingRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (start == 0) {
      start = CountStart();
      AT_START(start);
    }
    if (g_hasFailed) return false;
    auto* const bytes = static_cast<unsigned char*>(buffer);
    const std::uint64_t seed = SEED(start);
    for (std::size_t i = 0; i < size; ++i) {
      bytes[i] = static_cast<unsigned char>(Mix(seed << 32 | drawn++) >> 24);
    }
    if (drawn == size) std::memcpy(bytes, BEGINNING, sizeof BEGINNING - 1);
    return true;
  }

 private:
  std::uint64_t start = 0;
  std::uint64_t drawn = 0;
};

}  // namespace

EXPORT_RNG(CountingRng)
