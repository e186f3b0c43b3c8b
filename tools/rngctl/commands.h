#ifndef TOOLS_RNGCTL_COMMANDS_H
#define TOOLS_RNGCTL_COMMANDS_H

#include "encoding.h"

#include <cstdint>
#include <string>

/// Each command prints its result on standard output and throws a `Refusal` when it cannot be had.

void RunList();

struct ReadRequest {
  std::string name;  ///< empty: the configured default
  std::uint64_t size = 0;
  Encoding encoding = Encoding::kHex;
  std::string file;  ///< empty: standard output
};
void RunRead(const ReadRequest& request);

void RunDefault(std::uint32_t mask);

void RunDefaultSet(const std::string& name, const std::string& hardwareId);

#endif
