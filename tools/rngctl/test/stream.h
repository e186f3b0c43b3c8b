#ifndef TOOLS_RNGCTL_TEST_STREAM_H
#define TOOLS_RNGCTL_TEST_STREAM_H

#include "quality/verdict.h"
#include "tools/rngctl/test/messages.h"
#include "tools/rngctl/test/picture.h"
#include "tools/rngctl/test/test.h"

#include <optional>

/// How fast the generator is.
struct Speed {
  std::uint64_t bytesPerSecond = 0;  ///< in large draws, or in all if there are only small ones
  std::size_t smallDraws = 0;  ///< how many draws of `kSmallDraw` bytes the two times are from
  double median = 0;           ///< in seconds
  double percentile99 = 0;     ///< 99 % of them took no longer
};

/// What the tests have learnt from drawing bytes.
struct DrawnStream {
  SourceFacts facts;
  StreamTests tests;
  Speed speed;
};

/// Draws from the generator in a process of its own, and gives all bytes to the tests and, if there is one,
/// to the picture. `leave` is called in that process first. Shows the progress. Throws a `Refusal`.
DrawnStream DrawStream(const TestRequest& request, Picture* picture,
                       const std::function<void()>& leave);

/// How long the start of the library may take.
constexpr std::chrono::seconds kTimeToStart(20);

/// How long a process that starts the library and draws once from a generator with these flags may take.
std::chrono::seconds GetLimitOfStart(std::uint32_t flags);

#endif
