#ifndef TOOLS_RNGCTL_COMMANDS_READ_DRAW_H
#define TOOLS_RNGCTL_COMMANDS_READ_DRAW_H

#include "tools/rngctl/commands/read/drawing_process.h"

#include <cstdint>
#include <string>

/// The most that is drawn at once; a multiple of three, for base64.
constexpr std::size_t kLargestPiece = 3UL * 16384;

/// Starts the library, draws from that generator, or from the configured default if `name` is empty, and
/// stops the library. All pieces but the last have a multiple of three bytes. Throws a `Refusal`.
void Draw(const std::string& name, std::uint64_t size, const TakePiece& pass);

#endif
