// The library compared with the bare loop: each operation, and how both grow.

#include "benchmarks/machine/operations.h"
#include "benchmarks/timing/alternation.h"

#include <benchmark/benchmark.h>
#include <fstream>
#include <stdexcept>

namespace {

Side MakeSide(Machine::Library library, const Operation& operation) {
  const auto ready = std::make_shared<ReadyOperation>(library, operation);
  return {[ready] { ready->GetMachine().UseSettings(); }, [ready] { ready->Run(); }};
}

void RegisterOperation(const std::string& name, const Operation& operation) {
  RegisterPair(name, [operation] {
    return Pair{MakeSide(Machine::Library::kOurs, operation),
                MakeSide(Machine::Library::kBare, operation)};
  });
}

void RegisterGrowth() {
  for (int plugins = 0; plugins <= kAllPlugins; ++plugins) {
    Operation operation = FindOperation("StartAndStopTwelve");
    operation.plugins = plugins;
    RegisterOperation("growth/StartAndStop/" + std::to_string(plugins), operation);
  }
  for (const char* name : {"GetType", "SetType"}) {
    for (long lines = 10; lines <= 100'000; lines *= 10) {
      Operation operation = FindOperation(name);
      operation.profileLines = lines;
      RegisterOperation(std::string("growth/") + name + "/" + std::to_string(lines), operation);
    }
  }
}

double ResidentKiB() {
  std::ifstream rollup("/proc/self/smaps_rollup");
  for (std::string word; rollup >> word;) {
    double size;
    if (word == "Rss:" && rollup >> size) return size;
  }
  throw std::runtime_error("/proc/self/smaps_rollup has no resident memory");
}

// Records the resident memory after 1 restart and, in powers of ten, up to 10,000.
void Restart(benchmark::State& state) {
  const ReadyOperation operation(Machine::Library::kOurs, FindOperation("StartAndStopTwelve"));
  long done = 0;
  for (auto _ : state) {
    for (long restarts = 1; restarts <= 10'000; restarts *= 10) {
      for (; done < restarts; ++done) operation.Run();
      state.counters["resident_KiB_" + std::to_string(restarts)] = ResidentKiB();
    }
  }
}

}  // namespace

void RegisterLibrary() {
  for (const Operation& operation : AllOperations()) {
    RegisterOperation(std::string("library/") + operation.name, operation);
  }
  RegisterGrowth();
  benchmark::RegisterBenchmark("growth/Restart", Restart)->Iterations(1);
}
