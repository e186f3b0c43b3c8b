#ifndef TOOLS_RNGCTL_COMMANDS_READ_PIECES_H
#define TOOLS_RNGCTL_COMMANDS_READ_PIECES_H

#include "tools/rngctl/process/forked/forked_process.h"

#include <cstdint>
#include <string>

/// Fills the piece, or throws a `Refusal`. `done` is the number of bytes before it.
using FillPiece = std::function<void(SecretBytes& piece, std::uint64_t done)>;

/// Draws one piece after another. The size of each but the last is a multiple of three.
void DrawInPieces(std::uint64_t size, const FillPiece& fill, const TakePiece& pass);

/// Draws everything at once, so that the user is asked once. Refuses a size that is too large for one draw, in a
/// sentence that begins with `what`, the generator that needs the user.
void DrawAtOnce(std::uint64_t size, const std::string& what, const FillPiece& fill,
                const TakePiece& pass);

#endif
