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
  std::string record;  ///< a file that says what went into the bytes; empty: none
};

/// Draws random bytes and writes them. With several generators or a record, nothing appears before everything has
/// succeeded.
void RunRead(const ReadRequest& request);

#endif
