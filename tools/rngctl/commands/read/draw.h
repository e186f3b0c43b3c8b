#ifndef TOOLS_RNGCTL_COMMANDS_READ_DRAW_H
#define TOOLS_RNGCTL_COMMANDS_READ_DRAW_H

#include "tools/rngctl/drawing/chosen_generator.h"
#include "tools/rngctl/process/forked/forked_process.h"

#include <cstdint>

struct DrawRequest : GeneratorChoice {
  std::uint64_t size = 0;
  bool isChecked = true;  ///< refuses bytes that are evidently not random
};

/// Starts the library, draws from that generator and stops the library. All pieces but the last have a
/// multiple of three bytes. Throws a `Refusal`.
void Draw(const DrawRequest& request, const TakePiece& pass);

#endif
