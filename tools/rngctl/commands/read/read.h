#ifndef TOOLS_RNGCTL_COMMANDS_READ_READ_H
#define TOOLS_RNGCTL_COMMANDS_READ_READ_H

#include "tools/rngctl/commands/read/encoding.h"

#include <cstdint>
#include <string>

struct ReadRequest {
  std::string name;  ///< empty: the configured default
  std::uint64_t size = 0;
  Encoding encoding = Encoding::kHex;
  std::string file;  ///< empty: standard output
  bool replacesOthers = false;
};

/// Draws random bytes and writes them.
void RunRead(const ReadRequest& request);

#endif
