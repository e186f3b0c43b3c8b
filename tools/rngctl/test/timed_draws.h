#ifndef TOOLS_RNGCTL_TEST_TIMED_DRAWS_H
#define TOOLS_RNGCTL_TEST_TIMED_DRAWS_H

#include "tools/rngctl/drawing/chosen_generator.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/test/messages.h"

#include <chrono>
#include <cstdint>
#include <optional>

/// A draw of this size is what a host needs for a key. Its time is reported.
constexpr std::size_t kSmallDraw = 32;

/// What is drawn if the user does not choose a size: what comes in about five seconds, but not more than
/// this. A user who takes part in the draw is asked once, for this much: a few keys.
constexpr std::uint64_t kMostBytes = 64UL << 20;
constexpr std::chrono::seconds kTimeToDraw(5);
constexpr std::uint64_t kBytesFromUser = 256;

/// How much will be drawn at most.
std::uint64_t GetMostBytes(const std::optional<std::uint64_t>& wanted, std::uint32_t flags);

/// In the process that draws: sends one piece with the facts, and one for each draw. Checks nothing, because
/// the tests must see the bytes as they are.
void DrawAndTime(const GeneratorChoice& source, const std::optional<std::uint64_t>& wanted,
                 const TakePiece& pass);

/// Those pieces, where they arrive. Throw a `Refusal` if they are something else.
SourceFacts ReadFacts(const SecretBytes& piece);
struct TimedDraw {
  std::chrono::nanoseconds time;
  const char* bytes;  ///< in the piece
  std::size_t size;
};
TimedDraw ReadDraw(const SecretBytes& piece);

#endif
