#ifndef TOOLS_RNGCTL_COMMANDS_READ_DRAW_H
#define TOOLS_RNGCTL_COMMANDS_READ_DRAW_H

#include "tools/rngctl/drawing/chosen_generator.h"
#include "tools/rngctl/process/forked/forked_process.h"

#include <cstdint>
#include <optional>

struct DrawRequest : GeneratorChoice {
  std::uint64_t size = 0;
  bool isChecked = true;              ///< refuses bytes that are evidently not random
  std::string from;                   ///< the generators to combine; empty: draws from one
  std::optional<std::uint64_t> need;  ///< how many of them are enough; by default all
  bool isRecorded = false;
};

/// Starts the library, draws from the requested generators, and stops the library. The size of every piece but the last
/// is a multiple of three. If a record is requested, it follows the bytes, as JSON. Throws a `Refusal`.
void Draw(const DrawRequest& request, const TakePiece& pass);

#endif
