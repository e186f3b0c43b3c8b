// A known-path service that answers as the test case says (`KnownPath`) and logs what it was asked.

#include "tests/support/fakes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <unistd.h>

#if HAS_FUNCTION
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
  const bool isClear = std::all_of(buffer, buffer + 256, [](char c) { return c == '\0'; });
  RecordCall("known_path", std::to_string(id) + (isClear ? "" : ":dirty") + ":" +
                               std::to_string(*size) + ":" + std::to_string(fourth));
  const FakeKnownPath& service = KnownPath();
  const auto directory = service.directories.find(id);
  if (directory == service.directories.end()) return 1;
  if (service.fillsBuffer) {
    std::memset(buffer, 'x', 256);
  } else {
    std::memcpy(buffer, directory->second.c_str(), directory->second.size() + 1);
  }
  return 0;
}
#endif
