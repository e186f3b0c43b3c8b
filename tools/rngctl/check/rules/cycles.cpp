#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/process/resources.h"

#include <vector>

namespace {

constexpr std::size_t kWarmUp = 50;  // covers what the loader and the C library allocate once
constexpr std::size_t kCycles = 1000;
constexpr std::size_t kDrawSize = 32;
constexpr std::size_t kCyclesAtOnce = 250;  // leaked files must not reach the system's limit first

// Half of the smallest growth that a leak in every cycle causes: one block of malloc (32 bytes), one
// page of address space. What is allocated only once after the warm-up stays below that.
constexpr std::size_t kHeapSlack = kCycles * 32 / 2;
constexpr std::size_t kAddressSlack = kCycles * 4096 / 2;
constexpr std::size_t kMappingSlack = kCycles / 2;

// What is called in each cycle, besides start and stop.
struct Calls {
  bool draw = false;
  std::vector<TextOperation> texts;
};

// Measures in this thread: on a busy machine, another thread would report late that its draw has ended.
// All calls together may take no more than half of the time.
template <typename Call>
bool IsQuick(const WatchedPlugin& plugin, std::size_t share, Call call) {
  const auto begin = std::chrono::steady_clock::now();
  const bool isDone = call();
  return isDone && (std::chrono::steady_clock::now() - begin) * kCycles * share < plugin.Limit();
}

bool DrawHere(WatchedPlugin& plugin) {
  GuardedBuffer buffer(kDrawSize, 0);
  return plugin.Generate(buffer.Data(), buffer.Size());
}

// The first draw shows whether draws wait.
bool DrawsQuickly(WatchedPlugin& plugin) {
  return CanDraw(plugin) && Draw(plugin, kDrawSize, 0).answer &&
         IsQuick(plugin, 4, [&plugin] { return DrawHere(plugin); });
}

// Leaves out texts whose operation ends the process or throws: other checks report those.
std::vector<TextOperation> QuickTexts(WatchedPlugin& plugin) {
  std::vector<TextOperation> texts;
  for (const auto& [step, text] :
       {std::pair<Step, TextOperation>(Step::kGetName, &IRngProvider::GetName),
        {Step::kGetDescription, &IRngProvider::GetDescription},
        {Step::kGetHardwareId, &IRngProvider::GetHardwareId}}) {
    const auto read = [&plugin, operation = text] {
      ReadGuarded(plugin, operation);
      return true;
    };
    if (plugin.IsGood(step) && IsQuick(plugin, 12, read)) texts.push_back(text);
  }
  return texts;
}

Calls ChooseCalls(WatchedPlugin& plugin) {
  Calls calls;
  if (plugin.StartWithBuiltIn()) calls = {DrawsQuickly(plugin), QuickTexts(plugin)};
  plugin.Stop();
  return calls;
}

void RunCycles(WatchedPlugin& plugin, std::size_t count, const Calls& calls) {
  for (std::size_t done = 0; done < count; ++done) {
    plugin.RequireTime();
    if (plugin.StartWithBuiltIn()) {
      if (calls.draw) DrawHere(plugin);
      for (const TextOperation text : calls.texts) ReadGuarded(plugin, text);
    }
    plugin.Stop();
  }
}

void RequireNoGrowth(const std::string& what, std::size_t before, std::size_t after,
                     std::size_t slack) {
  Require(after <= before + slack, "Within " + std::to_string(kCycles) + " more cycles, " + what +
                                       " grew from " + std::to_string(before) + " to " +
                                       std::to_string(after) + ".");
}

Finding CheckLoadCycles(WatchedPlugin& plugin) {
  const Calls calls = ChooseCalls(plugin);
  RunCycles(plugin, kWarmUp, calls);
  const ProcessSize before = SizeOfThisProcess();
  for (std::size_t done = 0; done < kCycles; done += kCyclesAtOnce) {
    RunCycles(plugin, kCyclesAtOnce, calls);
    RequireNoGrowth("the number of open files", before.files, OpenFiles().size(), 0);
  }
  const ProcessSize after = SizeOfThisProcess();
  RequireNoGrowth("the number of mappings", before.mappings, after.mappings, kMappingSlack);
  RequireNoGrowth("the heap in use (bytes)", before.heap, after.heap, kHeapSlack);
  RequireNoGrowth("the address space (bytes)", before.addressSpace, after.addressSpace,
                  kAddressSlack);
  return Passed();
}

}  // namespace

std::vector<Rule> CycleRules() {
  return {
      {"load-cycles", Severity::kError, "The process does not grow over 1,000 uses",
       "In Release, free what start, draws and texts have allocated. A statically linked libstdc++ "
       "keeps some memory at each load.",
       CheckLoadCycles},
  };
}
