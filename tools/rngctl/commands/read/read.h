#ifndef TOOLS_RNGCTL_COMMANDS_READ_READ_H
#define TOOLS_RNGCTL_COMMANDS_READ_READ_H

#include "tools/rngctl/commands/read/draw.h"
#include "tools/rngctl/commands/read/encoding.h"

#include <string>

struct ReadRequest {
  DrawRequest draw;
  Encoding encoding = Encoding::kHex;
  std::string file;  ///< empty: standard output
  bool replacesOthers = false;
};

/// Draws random bytes and writes them.
void RunRead(const ReadRequest& request);

#endif
