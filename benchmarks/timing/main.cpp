// Runs the registered benchmarks. Google Benchmark's options say where the results go.
// `./dev bench` turns them into a table and a picture.

#include "benchmarks/timing/draw_timing.h"
#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/number_timing.h"
#include "benchmarks/timing/profile_timing.h"

#include <benchmark/benchmark.h>

void RegisterLibrary();
void RegisterPeers();

int main(int count, char** arguments) {
  RegisterLibrary();
  RegisterDraws();
  RegisterNumbers();
  RegisterPlainLoops();
  RegisterOwnModules();
  RegisterPeers();
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
