// A known-path service that answers as the test case says (`KnownPath`) and logs what it was asked.

#include "tests/support/fake_answers.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#ifdef THROWS
#include <stdexcept>
#endif

#if HAS_FUNCTION
namespace {

constexpr std::size_t kBufferSize = 256;

bool IsClear(const char* buffer) {
  static const char zeros[kBufferSize] = {};
  return std::memcmp(buffer, zeros, kBufferSize) == 0;
}

void LogQuestion(std::int32_t id, bool isClear, std::uint64_t size, std::uint64_t fourth) {
  char text[80];
  std::snprintf(text, sizeof text, "%" PRId32 "%s:%" PRIu64 ":%" PRIu64, id,
                isClear ? "" : ":dirty", size, fourth);
  RecordCallFromC("known_path", text);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t CKP_GetPath(std::int32_t id,
                                                                           char* buffer,
                                                                           std::uint64_t* size,
                                                                           std::uint64_t fourth) {
#ifdef CRASHES
  std::abort();
#endif
#ifdef CRASHES_IN_CALL
  static int calls = 0;
  if (++calls == CRASHES_IN_CALL) std::abort();
#endif
#ifdef THROWS
  throw std::runtime_error("no directories today");
#endif
#ifdef EXITS
  std::_Exit(0);
#endif
#ifdef QUITS
  std::exit(0);
#endif
#ifdef HANGS
  ::pause();
#endif
  LogQuestion(id, IsClear(buffer), *size, fourth);
  const char* const directory = DirectoryOfKnownPath(id);
  if (!directory) return 1;
  if (DoesKnownPathFillBuffers()) {
    std::memset(buffer, 'x', kBufferSize);
  } else {
    std::memcpy(buffer, directory, std::strlen(directory) + 1);
  }
  return 0;
}
#endif
