#include "checks.h"
#include "process_traces.h"
#include "watched_draw.h"

namespace {

constexpr std::size_t kWarmUp = 50;  // what loader and C library set aside once
constexpr std::size_t kCycles = 1000;
constexpr std::size_t kDrawSize = 32;
constexpr std::size_t kCyclesAtOnce = 250;  // before files that stay open reach the system's limit

// Half of the least that a leak in every cycle makes: one block of malloc (32 bytes), one page of
// address space. What is set aside once more after the warm-up stays below that.
constexpr std::size_t kHeapSlack = kCycles * 32 / 2;
constexpr std::size_t kAddressSlack = kCycles * 4096 / 2;
constexpr std::size_t kMappingSlack = kCycles / 2;

// In this thread: on a busy machine another is late to tell of its draw.
bool DrawsInTime(WatchedPlugin& plugin) {
  GuardedBuffer buffer(kDrawSize, 0);
  const auto begin = std::chrono::steady_clock::now();
  const bool isDrawn = plugin.Generate(buffer.Data(), buffer.Size());
  const auto time = std::chrono::steady_clock::now() - begin;
  return isDrawn && time * kCycles * 4 < plugin.Subject().limit;
}

// Whether the draws, one in each cycle, leave enough of the time for the rest. The first shows
// whether they wait.
bool DrawsQuickly(WatchedPlugin& plugin) {
  if (!CanDraw(plugin)) return false;
  const bool isAvailable = plugin.StartWithBuiltIn();
  const bool draws = isAvailable && Draw(plugin, kDrawSize, 0).answer && DrawsInTime(plugin);
  plugin.Stop();
  return draws;
}

void RunCycles(WatchedPlugin& plugin, std::size_t count, bool draws) {
  for (std::size_t done = 0; done < count; ++done) {
    plugin.RequireTime();
    GuardedBuffer buffer(kDrawSize, 0);
    if (plugin.StartWithBuiltIn() && draws) plugin.Generate(buffer.Data(), buffer.Size());
    plugin.Stop();
  }
}

void RequireNoGrowth(const std::string& what, std::size_t before, std::size_t after,
                     std::size_t slack) {
  Require(after <= before + slack, "In " + std::to_string(kCycles) + " more cycles, or fewer, " +
                                       what + " has grown from " + std::to_string(before) + " to " +
                                       std::to_string(after) + ".");
}

}  // namespace

Finding CheckLoadCycles(WatchedPlugin& plugin) {
  const bool draws = DrawsQuickly(plugin);
  RunCycles(plugin, kWarmUp, draws);
  const ProcessSize before = SizeOfThisProcess();
  for (std::size_t done = 0; done < kCycles; done += kCyclesAtOnce) {
    RunCycles(plugin, kCyclesAtOnce, draws);
    RequireNoGrowth("the number of open files", before.files, OpenFiles().size(), 0);
  }
  const ProcessSize after = SizeOfThisProcess();
  RequireNoGrowth("the number of mappings", before.mappings, after.mappings, kMappingSlack);
  RequireNoGrowth("the heap in use (bytes)", before.heap, after.heap, kHeapSlack);
  RequireNoGrowth("the address space (bytes)", before.addressSpace, after.addressSpace,
                  kAddressSlack);
  return Passed();
}
