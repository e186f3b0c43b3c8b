// Compares the library with its model in random sequences of calls:
//
//     model_run [--seconds N] [--count N] [--seed S] [--mistake NAME]
//     model_run --replay "STEPS" [--mistake NAME]
//
// Runs for --seconds or --count sequences, whichever ends first, or until it is stopped. A sequence in
// which the library and its model differ is shrunk and printed. --mistake gives the model a fault.

#include "tests/model/comparison.h"
#include "tests/model/model.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Options {
  std::optional<double> seconds;
  std::optional<std::uint64_t> count;  // of sequences
  std::uint64_t seed = std::random_device()();
  std::optional<std::string> replay;
  std::string mistake;
};

// Shared with the process that runs the sequences, which may crash.
struct Progress {
  std::uint64_t sequences = 0;  // done
  std::uint64_t calls = 0;
};

volatile std::sig_atomic_t g_isStopped = 0;
volatile pid_t g_child = 0;

void Stop(int) {
  g_isStopped = 1;
  if (g_child > 0) ::kill(g_child, SIGTERM);
}

int Await(pid_t child) {
  g_child = child;
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) continue;
  g_child = 0;
  return status;
}

Options ReadOptions(int count, char** arguments) {
  Options options;
  for (int i = 1; i < count; i += 2) {
    const std::string name = arguments[i];
    if (i + 1 == count) throw std::invalid_argument(name + " needs a value");
    const std::string value = arguments[i + 1];
    if (name == "--seconds") {
      options.seconds = std::stod(value);
    } else if (name == "--count") {
      options.count = std::stoull(value);
    } else if (name == "--seed") {
      options.seed = std::stoull(value);
    } else if (name == "--replay") {
      options.replay = value;
    } else if (name == "--mistake") {
      options.mistake = value;
      if (std::find(kMistakes.begin(), kMistakes.end(), value) == kMistakes.end()) {
        throw std::invalid_argument("no such mistake: " + value);
      }
    } else {
      throw std::invalid_argument("no such option: " + name);
    }
  }
  return options;
}

// Runs sequences one after the other in this process; false at the first that differs.
bool RunSequences(const Options& options, Progress& progress) {
  const auto begin = Clock::now();
  const auto isOver = [&] {
    if (g_isStopped || progress.sequences == options.count) return true;
    return options.seconds &&
           std::chrono::duration<double>(Clock::now() - begin).count() >= *options.seconds;
  };
  while (!isOver()) {
    WatchForHang();
    const Steps steps = RandomSteps(options.seed, progress.sequences);
    if (!Difference(steps, options.mistake).empty()) return false;
    progress.calls += static_cast<std::uint64_t>(std::count_if(steps.begin(), steps.end(), IsCall));
    ++progress.sequences;
  }
  return true;
}

void ReportFailure(const Options& options, std::uint64_t number) {
  const Steps steps = RandomSteps(options.seed, number);
  std::printf("sequence %llu of seed %llu fails\n", static_cast<unsigned long long>(number),
              static_cast<unsigned long long>(options.seed));
  if (!Fails(steps, options.mistake, true)) {
    std::printf("but not alone: run it after those before it, or look at the end of the process\n");
    return;
  }
  const Steps shrunk = Shrink(steps, options.mistake);
  if (!Fails(shrunk, options.mistake, false)) std::printf("this time it agrees\n");
  std::printf("--replay \"%s\"\n", ToText(shrunk).c_str());
}

int Run(const Options& options) {
  void* const shared =
      ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) return 2;
  Progress& progress = *new (shared) Progress;
  const auto begin = Clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    g_child = 0;
    std::exit(RunSequences(options, progress) ? 0 : 1);
  }
  const int status = Await(child);
  const std::chrono::duration<double> duration = Clock::now() - begin;
  if (status != 0) ReportFailure(options, progress.sequences);
  std::printf("%llu sequences, %llu calls, seed %llu, %.1f seconds\n",
              static_cast<unsigned long long>(progress.sequences),
              static_cast<unsigned long long>(progress.calls),
              static_cast<unsigned long long>(options.seed), duration.count());
  return status == 0 ? 0 : 1;
}

int Replay(const Options& options) {
  const bool isFailing = Fails(ParseSteps(*options.replay), options.mistake, false);
  std::printf("%s\n", isFailing ? "fails" : "agrees");
  return isFailing ? 1 : 0;
}

// Runs this program again in a tree of its own; the loader reads its path only at the start.
int RunInTree(char** arguments) {
  std::string tree = fs::temp_directory_path() / "rng-model-XXXXXX";
  if (!::mkdtemp(tree.data())) return 2;
  fs::create_directory(tree + "/lib");
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv(kTreeVariable, tree.c_str(), 1);
    ::unsetenv("DISPLAY");
#ifdef SANITIZED
    ::setenv("LD_LIBRARY_PATH", (tree + "/lib").c_str(), 1);
#endif
    ::execv("/proc/self/exe", arguments);
    std::abort();
  }
  const int status = Await(child);
  fs::remove_all(tree);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}

}  // namespace

int main(int count, char** arguments) {
  std::signal(SIGINT, Stop);
  std::signal(SIGTERM, Stop);
  if (!std::getenv(kTreeVariable)) return RunInTree(arguments);
  try {
    const Options options = ReadOptions(count, arguments);
    LayOutTree();
    return options.replay ? Replay(options) : Run(options);
  } catch (const std::exception& wrong) {
    std::fprintf(stderr, "model_run: %s\n", wrong.what());
    return 2;
  }
}
