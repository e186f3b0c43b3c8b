#include "tools/rngctl/check/plugin/use_all.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/process/resources.h"
#include "tools/rngctl/terminal/text.h"

#include <cstdlib>
#include <dlfcn.h>
#include <future>
#include <thread>

namespace {

void Use(WatchedPlugin& plugin) {
  if (plugin.StartWithBuiltIn()) UseAll(plugin);
}

[[noreturn]] void EndProcess(WatchedPlugin& plugin, Step step) {
  plugin.BeginOwnStep(step);
  Record([](Transcript& transcript) { transcript.finding = Passed(); });
  std::exit(0);  // NOLINT(concurrency-mt-unsafe): exit is what the check examines
}

bool Holds(const std::map<std::string, std::string>& files,
           const std::pair<const std::string, std::string>& file) {
  const auto known = files.find(file.first);
  return known != files.end() && known->second == file.second;
}

// True also for an address in no library: this one was there and is unmapped.
bool IsInside(const void* function, const std::string& library) {
  Dl_info place;
  return ::dladdr(function, &place) == 0 || place.dli_fname == library;
}

std::string WhyMapped(const ElfFacts& facts) {
  if (facts.refusesUnloading) return " The file has the flag NODELETE.";
  if (!facts.uniqueSymbols.empty()) {
    return " It has GNU-unique symbols, such as " + facts.uniqueSymbols.front() + ".";
  }
  if (facts.hasThreadDestructors) {
    return " It has thread_local objects with destructors, and a thread that used one is still "
           "running.";
  }
  return " The file does not show why; it may have been opened a second time.";
}

Finding CheckReleaseEndsThreads(WatchedPlugin& plugin) {
  const std::set<std::string> before = ThreadsOfThisProcess();
  Use(plugin);
  plugin.Release();
  if (AreOnlyLeft(before)) return Passed();
  const std::size_t count = ThreadsOfThisProcess().size() - before.size();
  return Failed("After Release " + Counted(count, "thread") + (count == 1 ? " is" : " are") +
                " still running.");
}

Finding CheckReleaseClosesFiles(WatchedPlugin& plugin) {
  const std::map<std::string, std::string> before = OpenFiles();
  Use(plugin);
  plugin.Stop();
  const std::map<std::string, std::string> after = OpenFiles();
  for (const auto& file : after) {
    Require(Holds(before, file), "Left open: " + file.second + ".");
  }
  for (const auto& file : before) {
    Require(Holds(after, file),
            "It closed a descriptor that is not its own: " + file.first + ", " + file.second + ".");
  }
  return Passed();
}

Finding CheckNoHandlersLeft(WatchedPlugin& plugin) {
  const std::map<std::string, void*> before = Handlers();
  Use(plugin);
  plugin.Stop();
  for (const auto& [event, handler] : Handlers()) {
    const auto known = before.find(event);
    if (known != before.end() && known->second == handler) continue;
    Require(!handler || !IsInside(handler, plugin.File().path),
            "The handler of " + event + " still points into the library.");
  }
  return Passed();
}

// Uses the plug-in in a thread that exits after the library is closed, then exits the process.
Finding CheckCleanExit(WatchedPlugin& plugin) {
  std::packaged_task<void()> life([&plugin] {
    Use(plugin);
    plugin.Stop();
    plugin.BeginOwnStep(Step::kThreadExit);
  });
  std::future<void> end = life.get_future();
  std::thread(std::move(life)).join();
  end.get();
  EndProcess(plugin, Step::kProcessExit);
}

Finding CheckExitWithoutRelease(WatchedPlugin& plugin) {
  Use(plugin);
  EndProcess(plugin, Step::kProcessExitWithoutRelease);
}

Finding CheckUnmapped(WatchedPlugin& plugin) {
  Use(plugin);
  plugin.Stop();
  const std::string& path = plugin.File().path;
  if (!::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD)) return Passed();
  return Failed("It stays in the process after it is closed." + WhyMapped(ReadElfFacts(path)));
}

}  // namespace

std::vector<Rule> ReleaseRules() {
  return {
      {"release-ends-threads", Severity::kError, "After Release none of its threads is running",
       "End and join the threads in Release: the library's code is gone afterwards. The thread of "
       "the C library for timers with SIGEV_THREAD does not count, if /proc shows what it does.",
       CheckReleaseEndsThreads},
      {"release-closes-files", Severity::kError,
       "After unloading, its own files are closed and all others are still open",
       "In Release, close what the plug-in has opened, and close it only once.",
       CheckReleaseClosesFiles},
      {"no-handlers-left", Severity::kError,
       "After unloading, it has left no signal handler and no handler of the C++ runtime",
       "In Release, restore what was there before: sigaction, std::set_terminate, "
       "std::set_new_handler.",
       CheckNoHandlersLeft},
      {"clean-exit", Severity::kError,
       "After unloading, the exit of a thread or of the process does not call into it",
       "In Release, remove what was registered: on_exit handlers, thread-specific keys, callbacks.",
       CheckCleanExit},
      {"exit-without-release", Severity::kWarning,
       "A process that exits without Release exits normally",
       "Do not rely on static objects: they are destroyed while the generator is still in use.",
       CheckExitWithoutRelease},
      {"unmapped", Severity::kError, "Closing it removes it from the process",
       "Remove what keeps it loaded: -z nodelete, GNU-unique symbols (-fno-gnu-unique), "
       "thread_local objects with destructors.",
       CheckUnmapped},
  };
}
