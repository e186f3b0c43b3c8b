#ifndef TESTS_SUPPORT_FAKE_ANSWERS_H
#define TESTS_SUPPORT_FAKE_ANSWERS_H

#include <cstddef>
#include <cstdint>

class IRngProvider;
class IRngSettings;

// What fakes need of the scripts in fakes.h. The standard library's containers would take most of the time in
// which a fake is compiled, and each build has thirty of these.

/// Logs a call, see fakes.h.
extern "C" void RecordCallFromC(const char* who, const char* what);

/// What GetName writes and returns, by the script of the kind.
struct FakeName {
  const char* text;
  std::size_t written;
  std::int32_t size;
  std::int32_t sizeAgain;
};
FakeName NameOfFake(const char* kind);

bool IsFakeAvailable(const char* kind);
std::uint32_t FlagsOfFake(const char* kind);
void KeepSettings(const char* kind, IRngSettings* settings);

/// What the factory returns: the provider, or null if the script says so.
IRngProvider* GiveProvider(const char* kind, IRngProvider* provider);

/// The directory that the known-path service names, or null.
const char* DirectoryOfKnownPath(int id);
bool DoesKnownPathFillBuffers();

#endif
