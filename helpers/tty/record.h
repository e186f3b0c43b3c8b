#ifndef HELPERS_TTY_RECORD_H
#define HELPERS_TTY_RECORD_H

#include <string>

/// Stores what is typed in the terminal until Ctrl-C or Ctrl-D, a press in each line: its time in nanoseconds,
/// its key, and 1 if it arrived alone. The file must not exist; only its owner may read it. Throws a
/// `std::runtime_error` if that is not possible.
void RecordKeys(const std::string& path);

#endif
