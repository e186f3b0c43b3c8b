#ifndef TOOLS_RNGCTL_TERMINAL_TEXT_H
#define TOOLS_RNGCTL_TERMINAL_TEXT_H

#include <cstddef>
#include <string>

/// The text as it may be shown on a terminal. Everything that this program did not write itself passes
/// through here: names, arguments, paths, error messages. Control characters, and those that are
/// invisible or change the direction of writing, become "?". Bytes that are not UTF-8 become U+FFFD.
std::string Printable(const std::string& text);

/// `Printable` for each line; the line breaks stay, empty lines go.
std::string PrintableLines(const std::string& text);

/// The same JSON, with \u escapes for the characters that `Printable` replaces.
std::string EscapedJson(const std::string& json);

/// Whether the text is UTF-8 without control characters.
bool IsPlain(const std::string& text);

/// In quotes. A text that has its own is not quoted again.
std::string Quoted(const std::string& text);

/// "1 check", "2 checks".
std::string Counted(std::size_t count, const std::string& thing);

/// The number of UTF-8 characters, each taken as one column wide.
std::size_t CountColumns(const std::string& text);

/// The text, padded with blanks to that many columns.
std::string Padded(const std::string& text, std::size_t columns);

#endif
