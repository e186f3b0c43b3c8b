#ifndef TOOLS_RNGCTL_COMMANDS_READ_RECORD_H
#define TOOLS_RNGCTL_COMMANDS_READ_RECORD_H

#include "tools/rngctl/process/forked/forked_process.h"

#include <cstdint>
#include <string>
#include <vector>

#include <rngaggregator/provider.h>

/// A generator that took part, or that was left out.
struct RecordedSource {
  std::string kind;
  std::string device;      ///< "" for none
  IRngProvider* provider;  ///< null if it was missing
  std::uint64_t draws = 0;
  std::uint64_t bytes = 0;
  bool isChecked = true;
  std::string failure = {};  ///< why it was left out, the last time
};

/// The draw in which the sources took part.
struct RecordedDraw {
  std::uint64_t size;  ///< of the result
  bool isCombined;
  std::size_t need;
  std::uint64_t draws;
};

/// Passes on a JSON text that says what went into the result, with the file of each plug-in. It contains neither the
/// bytes nor anything computed from them. Throws a `Refusal` if a plug-in's file cannot be read, or has been replaced
/// since it was loaded.
void PassRecord(const RecordedDraw& draw, const std::vector<RecordedSource>& sources,
                const TakePiece& pass);

#endif
