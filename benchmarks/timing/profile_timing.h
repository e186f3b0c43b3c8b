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

/// Registers another library that reads a profile file and may also rewrite it (`write` is null if
/// not). It is compared with the bare loop on short and long files.
void RegisterProfilePeer(const std::string& name, ReadProfile read, WriteProfile write);

/// Registers the library itself, compared with loops of plain read and write.
void RegisterPlainLoops();

#endif
