#ifndef TOOLS_RNGCTL_TERMINAL_TEXT_H
#define TOOLS_RNGCTL_TERMINAL_TEXT_H

#include <cstddef>
#include <string>

/// Replaces control characters, so that text from outside cannot control the terminal.
std::string Printable(const std::string& text);

std::string Quoted(const std::string& text);

/// "1 check", "2 checks".
std::string Counted(std::size_t count, const std::string& thing);

/// The number of UTF-8 characters, each taken as one column wide.
std::size_t CountColumns(const std::string& text);

/// The text, padded with blanks to that many columns.
std::string Padded(const std::string& text, std::size_t columns);

#endif
