#ifndef BENCHMARKS_TIMING_PROFILE_TIMING_H
#define BENCHMARKS_TIMING_PROFILE_TIMING_H

#include <cstddef>
#include <string>

constexpr char kProfileSection[] = "Devices";
constexpr char kProfileKey[] = "RandomNumberGeneratorType";

using ReadProfile = bool (*)(const char* path, const char* section, const char* key, char* buffer,
                             std::size_t size);
using WriteProfile = bool (*)(const char* path, const char* section, const char* key,
                              const char* value);

/// Another library that reads a profile file and may rewrite it (else `write` is null), on short and
/// long files beside the bare loop.
void RegisterProfilePeer(const std::string& name, ReadProfile read, WriteProfile write);

/// The library beside loops of plain read and write.
void RegisterPlainLoops();

#endif
