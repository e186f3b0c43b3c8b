#ifndef SETTINGS_PROFILE_STREAM_H
#define SETTINGS_PROFILE_STREAM_H

#include <cstdio>
#include <memory>

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open profile file, closed at the end of the scope. Null when it could not be opened.
using ProfileFile = std::unique_ptr<std::FILE, CloseFile>;

#endif
