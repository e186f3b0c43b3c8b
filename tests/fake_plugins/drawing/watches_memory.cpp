// Each drawn byte is 1 if a crash could now leave a core dump, else 0. With RNG_LOOK_FOR_BYTES, the bytes
// are a pattern instead, and Release throws if the pattern is still in the memory of the process.

#include "tests/fake_plugins/correct_rng.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr std::size_t kPatternSize = 64;

// Computed, so that the program itself does not contain it.
unsigned char PatternAt(std::size_t place) {
  return static_cast<unsigned char>((place % kPatternSize * 37 + 11) ^ 0x5C);
}

bool HasPattern(const unsigned char* bytes, std::size_t size) {
  for (std::size_t start = 0; start + kPatternSize <= size; ++start) {
    std::size_t same = 0;
    while (same < kPatternSize && bytes[start + same] == PatternAt(same)) ++same;
    if (same == kPatternSize) return true;
  }
  return false;
}

// Through a file, because an instrumented program forbids reading some of its memory directly.
bool IsIn(int memory, std::uint64_t start, std::uint64_t end) {
  static unsigned char piece[65536];
  bool isFound = false;
  for (std::uint64_t place = start; place < end; place += sizeof piece - kPatternSize) {
    const ssize_t size = ::pread(memory, piece, std::min<std::uint64_t>(sizeof piece, end - place),
                                 static_cast<off_t>(place));
    isFound = isFound || (size > 0 && HasPattern(piece, static_cast<std::size_t>(size)));
    ::explicit_bzero(piece, sizeof piece);  // so that the next search does not find the copy here
  }
  return isFound;
}

bool IsInMemory() {
  constexpr std::uint64_t kLargest =
      1UL << 28;  // instrumented programs have larger ones, mostly unused

  const int dumpable = ::prctl(PR_GET_DUMPABLE);
  ::prctl(PR_SET_DUMPABLE, 1);  // otherwise only root may open the memory
  std::FILE* const maps = std::fopen("/proc/self/maps", "re");
  const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  if (!maps || memory < 0) throw std::runtime_error("the memory cannot be read");
  char line[512];
  bool isFound = false;
  while (std::fgets(line, sizeof line, maps)) {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    if (std::sscanf(line, "%" SCNx64 "-%" SCNx64 " rw-p", &start, &end) != 2) continue;
    if (!std::strstr(line, " rw-p ") || end - start > kLargest) continue;
    isFound = isFound || IsIn(memory, start, end);
  }
  std::fclose(maps);
  ::close(memory);
  ::prctl(PR_SET_DUMPABLE, dumpable);
  return isFound;
}

class WatchesMemoryRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    const auto dumpable = static_cast<unsigned char>(::prctl(PR_GET_DUMPABLE));
    for (std::size_t i = 0; i < size; ++i) bytes[i] = isLooking ? PatternAt(i) : dumpable;
    if (isLooking && !IsInMemory()) throw std::runtime_error("the pattern is not found");
    return true;
  }
  void Release() override {
    if (isLooking && IsInMemory()) throw std::runtime_error("the bytes are still in the memory");
  }

 private:
  const bool isLooking = std::getenv("RNG_LOOK_FOR_BYTES") != nullptr;
};

}  // namespace

EXPORT_RNG(WatchesMemoryRng)
