#ifndef TOOLS_RNGCTL_COMMANDS_READ_ENCODING_H
#define TOOLS_RNGCTL_COMMANDS_READ_ENCODING_H

#include "tools/rngctl/process/forked/secret_bytes.h"

enum class Encoding { kRaw, kHex, kBase64 };

/// The bytes as lower-case hexadecimal, as base64 (RFC 4648, padded), or as they are. Base64 of
/// pieces can be joined when every piece but the last has a multiple of three bytes.
SecretBytes Encode(const SecretBytes& bytes, Encoding encoding);

#endif
