#ifndef BENCHMARKS_TIMING_ALTERNATION_H
#define BENCHMARKS_TIMING_ALTERNATION_H

#include <functional>
#include <string>

/// An operation to measure, and the bare one to compare it with. `prepare` runs before each batch
/// and is not measured; it may be empty.
struct Side {
  std::function<void()> prepare;
  std::function<void()> run;
};
struct Pair {
  Side measured;
  Side bare;
};

using Clock = std::function<double()>;  ///< in seconds
double ProcessorSeconds();              ///< of this process

/// Registers a benchmark that runs batches of both sides alternately, measures with that clock, and
/// reports the quartiles of the ratio between neighbouring batches. `make` is called when the
/// benchmark begins; the functions of the pair own whatever they need.
void RegisterPair(const std::string& name, std::function<Pair()> make,
                  const Clock& clock = ProcessorSeconds);

#endif
