#ifndef TOOLS_RNGCTL_COMMANDS_READ_DRAW_H
#define TOOLS_RNGCTL_COMMANDS_READ_DRAW_H

#include "tools/rngctl/commands/read/drawing_process.h"

#include <cstdint>
#include <string>

/// The most that is drawn at once; a multiple of three, for base64.
constexpr std::size_t kLargestPiece = 3UL * 16384;

struct DrawRequest {
  std::string name;    ///< of the generator; empty: the configured default
  std::string device;  ///< its hardware identifier; empty: the default's, or the one that is in use
  std::uint64_t size = 0;
  bool isChecked = true;  ///< refuses bytes that are evidently not random
};

/// Starts the library, draws from that generator and stops the library. All pieces but the last have a
/// multiple of three bytes. Throws a `Refusal`.
void Draw(const DrawRequest& request, const TakePiece& pass);

#endif
