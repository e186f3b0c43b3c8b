#ifndef HELPERS_TTY_RECORD_H
#define HELPERS_TTY_RECORD_H

#include <string>

/// Records what is typed in the terminal until Ctrl-C or Ctrl-D. Each line of the file is one press: its time in
/// nanoseconds, its key, and 1 if it arrived alone. Creates the file, which must not exist, readable by its owner
/// alone. Throws a `std::runtime_error` on failure.
void RecordKeys(const std::string& path);

#endif
