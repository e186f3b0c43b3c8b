#ifndef TOOLS_RNGCTL_COMMANDS_READ_COMBINED_H
#define TOOLS_RNGCTL_COMMANDS_READ_COMBINED_H

#include "tools/rngctl/commands/read/draw.h"

/// Does what `Draw` does, with several generators. Reports on standard error which of them were left out.
void DrawCombined(const DrawRequest& request, const TakePiece& pass);

#endif
