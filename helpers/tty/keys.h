#ifndef HELPERS_TTY_KEYS_H
#define HELPERS_TTY_KEYS_H

#include "helpers/gathering/event.h"

#include <string>
#include <vector>

/// Splits what was read from a terminal at that time into presses. A single character of up to four bytes in UTF-8 is
/// one press. Anything else that arrives in one read is a paste, an arrow key or another escape sequence: each byte of
/// it is a press that is not alone.
std::vector<KeyPress> SplitKeys(const std::string& bytes, std::chrono::nanoseconds time);

#endif
