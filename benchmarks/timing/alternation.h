#ifndef BENCHMARKS_TIMING_ALTERNATION_H
#define BENCHMARKS_TIMING_ALTERNATION_H

#include <functional>
#include <string>

/// One thing measured and the bare one beside it. `prepare`, not measured, may be empty; it comes
/// before each batch of runs.
struct Side {
  std::function<void()> prepare;
  std::function<void()> run;
};
struct Pair {
  Side measured;
  Side bare;
};

/// Registers a benchmark that runs batches of both sides in turn, in processor time, and reports the
/// quartiles of the ratio between neighbours. `make` is called when the benchmark begins; what the
/// pair needs lives in its functions.
void RegisterPair(const std::string& name, std::function<Pair()> make);

#endif
