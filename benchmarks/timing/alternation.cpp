#include "benchmarks/timing/alternation.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <vector>

namespace {

constexpr int kRounds = 61;
constexpr double kBatchSeconds = 0.004;  // long compared with the cost of the clock itself

double TimeBatch(const Side& side, long runs, const Clock& clock) {
  if (side.prepare) side.prepare();
  const double begin = clock();
  for (long run = 0; run < runs; ++run) side.run();
  return (clock() - begin) / static_cast<double>(runs);
}

// The speed of a string function varies by some percent with the distance of its text from the end
// of a page. So the stack begins at a different place in each round.
__attribute__((noinline)) double TimeBatchElsewhere(const Side& side, long runs, const Clock& clock,
                                                    std::size_t round) {
  void* const room = __builtin_alloca(1 + round * 208 % 4096);
  asm volatile("" : : "r"(room) : "memory");  // keeps the compiler from removing it
  return TimeBatch(side, runs, clock);
}

// Finds how many runs fill a batch, which also warms the caches.
long FindBatch(const Side& side, const Clock& clock) {
  long runs = 1;
  while (TimeBatch(side, runs, clock) * static_cast<double>(runs) < kBatchSeconds / 2) runs *= 2;
  return runs;
}

double Quantile(std::vector<double> values, double part) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

struct Samples {
  std::vector<double> ratios;
  std::vector<double> measured;
  std::vector<double> bare;
};

// The sides take turns in going first, so that neither benefits from the order.
void AddRound(const Pair& pair, long measuredRuns, long bareRuns, const Clock& clock,
              Samples& samples) {
  const std::size_t round = samples.ratios.size();
  const bool isBareFirst = round % 2 == 0;
  double bare = isBareFirst ? TimeBatchElsewhere(pair.bare, bareRuns, clock, round) : 0;
  const double measured = TimeBatchElsewhere(pair.measured, measuredRuns, clock, round);
  if (!isBareFirst) bare = TimeBatchElsewhere(pair.bare, bareRuns, clock, round);
  samples.ratios.push_back(measured / bare);
  samples.measured.push_back(measured);
  samples.bare.push_back(bare);
}

void Alternate(benchmark::State& state, const std::function<Pair()>& make, const Clock& clock) {
  const Pair pair = make();
  const long measuredRuns = FindBatch(pair.measured, clock);
  const long bareRuns = FindBatch(pair.bare, clock);
  Samples samples;
  for (auto _ : state) {
    AddRound(pair, measuredRuns, bareRuns, clock, samples);
    state.SetIterationTime(samples.measured.back());
  }
  state.counters["ratio_q1"] = Quantile(samples.ratios, 0.25);
  state.counters["ratio"] = Quantile(samples.ratios, 0.5);
  state.counters["ratio_q3"] = Quantile(samples.ratios, 0.75);
  state.counters["measured_ns"] = 1e9 * Quantile(samples.measured, 0.5);
  state.counters["bare_ns"] = 1e9 * Quantile(samples.bare, 0.5);
}

}  // namespace

double ProcessorSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void RegisterPair(const std::string& name, std::function<Pair()> make, const Clock& clock) {
  benchmark::RegisterBenchmark(
      name.c_str(),
      [make = std::move(make), clock](benchmark::State& state) { Alternate(state, make, clock); })
      ->Iterations(kRounds)
      ->UseManualTime();
}
