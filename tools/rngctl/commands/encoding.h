#ifndef TOOLS_RNGCTL_COMMANDS_ENCODING_H
#define TOOLS_RNGCTL_COMMANDS_ENCODING_H

#include <string>
#include <string_view>

enum class Encoding { kRaw, kHex, kBase64 };

/// The bytes as lower-case hexadecimal, as base64 (RFC 4648, padded), or as they are. Base64 of
/// pieces can be joined when every piece but the last has a multiple of three bytes.
std::string Encode(std::string_view bytes, Encoding encoding);

#endif
