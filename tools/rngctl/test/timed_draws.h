#ifndef TOOLS_RNGCTL_TEST_TIMED_DRAWS_H
#define TOOLS_RNGCTL_TEST_TIMED_DRAWS_H

#include "tools/rngctl/drawing/chosen_generator.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/test/messages.h"

#include <chrono>
#include <cstdint>
#include <optional>

/// The size of a key. The time of such draws is reported.
constexpr std::size_t kSmallDraw = 32;

/// Without a size from the user, drawing ends after this many bytes or this time, whichever comes first.
constexpr std::uint64_t kMostBytes = 64UL << 20;
constexpr std::chrono::seconds kTimeToDraw(5);

/// A generator that needs the user is asked once, for this many bytes: enough for a few keys.
constexpr std::uint64_t kBytesFromUser = 256;

/// How much will be drawn at most.
std::uint64_t GetMostBytes(const std::optional<std::uint64_t>& wanted, std::uint32_t flags);

/// In the process that draws: sends one piece with the facts, and one for each draw. Checks nothing, because
/// the tests must see the bytes as they are.
void DrawAndTime(const GeneratorChoice& source, const std::optional<std::uint64_t>& wanted,
                 const TakePiece& pass);

/// Decode those pieces in the process that receives them. Throw a `Refusal` if they are not valid.
SourceFacts ReadFacts(const SecretBytes& piece);
struct TimedDraw {
  std::chrono::nanoseconds time;
  const char* bytes;  ///< in the piece
  std::size_t size;
};
TimedDraw ReadDraw(const SecretBytes& piece);

#endif
