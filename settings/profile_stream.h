#ifndef SETTINGS_PROFILE_STREAM_H
#define SETTINGS_PROFILE_STREAM_H

#include <cstdio>
#include <memory>

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Owns an open profile file and closes it. Null when the file could not be opened.
using ProfileFile = std::unique_ptr<std::FILE, CloseFile>;

#endif
