#ifndef HELPERS_TTY_KEYS_H
#define HELPERS_TTY_KEYS_H

#include "helpers/gathering/event.h"

#include <string>
#include <vector>

/// The presses of what was read from a terminal at that time. A single character is a press, whatever its
/// script: in UTF-8 it may have four bytes. Anything else that comes in one read is a paste, an arrow key or
/// another sequence of the terminal: each byte of it is a press that is not alone.
std::vector<KeyPress> SplitKeys(const std::string& bytes, std::chrono::nanoseconds time);

#endif
