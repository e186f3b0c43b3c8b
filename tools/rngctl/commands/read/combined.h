#ifndef TOOLS_RNGCTL_COMMANDS_READ_COMBINED_H
#define TOOLS_RNGCTL_COMMANDS_READ_COMBINED_H

#include "tools/rngctl/commands/read/draw.h"

/// `Draw` from several generators. Says on standard error which of them were left out.
void DrawCombined(const DrawRequest& request, const TakePiece& pass);

#endif
