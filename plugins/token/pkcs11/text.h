#ifndef RNG_TOKEN_TEXT_H
#define RNG_TOKEN_TEXT_H

#include <cstddef>
#include <string>

/// The text of a field that a module pads with blanks or, against the standard, with zeros. Blanks at both ends are
/// removed.
std::string Trimmed(const unsigned char* field, std::size_t size);

template <std::size_t Size>
std::string Trimmed(const unsigned char (&field)[Size]) {
  return Trimmed(field, Size);
}

/// The text with "?" for each control character, each character that breaks the line or turns its order, and each byte
/// that is not UTF-8. A token may hold any bytes, and the text is shown on terminals.
std::string Plain(const std::string& text);

#endif
