// Runs what is registered. The results go where Google Benchmark's options say; `./dev bench` makes
// a table and a picture of them.

#include "benchmarks/timing/module_timing.h"
#include "benchmarks/timing/profile_timing.h"

#include <benchmark/benchmark.h>

void RegisterLibrary();
void RegisterPeers();

int main(int count, char** arguments) {
  RegisterLibrary();
  RegisterPlainLoops();
  RegisterOwnModules();
  RegisterPeers();
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
