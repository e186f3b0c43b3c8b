#ifndef TOOLS_RNGCTL_TEST_RESTARTS_H
#define TOOLS_RNGCTL_TEST_RESTARTS_H

#include "quality/restarts.h"
#include "tools/rngctl/drawing/chosen_generator.h"

#include <chrono>
#include <cstdint>
#include <vector>

constexpr std::uint64_t kUsualRestarts = 200;
constexpr std::chrono::seconds kTimeForRestarts(30);

/// Starts the library in that many processes, one after the other, and draws from the generator in each.
/// Each process executes this program anew. A forked one would share addresses and the random bytes of the
/// kernel with this one, and a generator may make its seed from those.
/// Starts no more after `kTimeForRestarts`. Shows the progress. `limit` applies to each process. Throws a
/// `Refusal`.
std::vector<FirstDraw> DrawAfterRestarts(const GeneratorChoice& source, std::uint64_t restarts,
                                         std::chrono::seconds limit);

#endif
