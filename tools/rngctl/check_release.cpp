#include "checks.h"
#include "child.h"
#include "host.h"
#include "process_traces.h"
#include "watched_draw.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <thread>

namespace {

// A use as short as a host's can be.
void Use(WatchedPlugin& plugin) {
  if (plugin.StartWithBuiltIn() && CanDraw(plugin)) Draw(plugin, 32, 0);
}

// A thread that was joined is seen for another moment.
bool HasOnly(const std::set<std::string>& threads) {
  for (int i = 0; i < 50; ++i) {
    const std::set<std::string> now = ThreadsOfThisProcess();
    if (std::includes(threads.begin(), threads.end(), now.begin(), now.end())) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

[[noreturn]] void EndProcess(WatchedPlugin& plugin, const std::string& step) {
  plugin.OwnStep(step);
  SendFinding(Passed());
  std::exit(0);  // NOLINT(concurrency-mt-unsafe): that is the question
}

bool Holds(const std::map<std::string, std::string>& files,
           const std::pair<const std::string, std::string>& file) {
  const auto known = files.find(file.first);
  return known != files.end() && known->second == file.second;
}

// Also when the library was there and is gone.
bool IsInside(const void* function, const std::string& library) {
  Dl_info place;
  return ::dladdr(function, &place) == 0 || place.dli_fname == library;
}

std::string WhyMapped(const ElfFacts& facts) {
  if (facts.refusesUnloading) return " The file carries the flag NODELETE.";
  if (!facts.uniqueSymbols.empty()) {
    return " It has GNU-unique symbols, such as " + facts.uniqueSymbols.front() + ".";
  }
  if (facts.hasThreadDestructors) {
    return " It has thread_local objects with destructors, and a thread that used one still runs.";
  }
  return " The file does not tell why; it may have been opened a second time.";
}

}  // namespace

Finding CheckReleaseEndsThreads(WatchedPlugin& plugin) {
  const std::set<std::string> before = ThreadsOfThisProcess();
  Use(plugin);
  plugin.Release();
  if (HasOnly(before)) return Passed();
  const std::size_t count = ThreadsOfThisProcess().size() - before.size();
  return Failed("After Release " + std::to_string(count) +
                (count == 1 ? " thread is" : " threads are") + " still running.");
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
            "Closed, and not its own: file number " + file.first + ", " + file.second + ".");
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
    Require(!handler || !IsInside(handler, plugin.Subject().path),
            "The handler of " + event + " is left in the library.");
  }
  return Passed();
}

// The whole use in a thread that ends after the closing, and then the end of the process.
Finding CheckCleanExit(WatchedPlugin& plugin) {
  std::packaged_task<void()> life([&plugin] {
    Use(plugin);
    plugin.Stop();
    plugin.OwnStep("the end of a thread that used it");
  });
  std::future<void> end = life.get_future();
  std::thread(std::move(life)).join();
  end.get();
  EndProcess(plugin, "the end of the process");
}

Finding CheckExitWithoutRelease(WatchedPlugin& plugin) {
  Use(plugin);
  EndProcess(plugin, "the end of the process without Release");
}

Finding CheckUnmapped(WatchedPlugin& plugin) {
  Use(plugin);
  plugin.Stop();
  const std::string& path = plugin.Subject().path;
  if (!::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD)) return Passed();
  return Failed("It stays in the process after it is closed." + WhyMapped(ReadElfFacts(path)));
}
