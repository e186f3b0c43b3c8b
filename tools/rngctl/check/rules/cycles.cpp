#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/process/resources.h"

#include <algorithm>
#include <cstdlib>
#include <future>
#include <malloc.h>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kWarmUp = 50;        // covers what the loader and the C library allocate once
constexpr std::size_t kShortWindow = 100;  // leaked files must not reach the system's limit first
constexpr std::size_t kLongWindow = 1000;
constexpr std::size_t kMostWindows = 5;
constexpr std::size_t kDrawSize = 32;

// A size that grows with a leak, and how much it may grow over a window without counting as a leak. The
// slack is an eighth of the growth from a leak of one block, mapping or page per cycle. Sizes that vary
// by chance also get a fixed allowance, for short windows.
struct Measure {
  const char* what;
  const char* unit;
  std::size_t ProcessSize::*size;
  std::size_t slackPerCycles;  // for eight cycles
  std::size_t leastSlack;

  std::size_t SlackOf(std::size_t cycles) const {
    return std::max(leastSlack, slackPerCycles * cycles / 8);
  }
};
constexpr Measure kFiles = {"the number of open files", "", &ProcessSize::files, 0, 0};
constexpr Measure kThreads = {"the number of threads", "", &ProcessSize::threads, 0, 0};
constexpr Measure kMappings = {"the number of mappings", "", &ProcessSize::mappings, 1, 32};
constexpr Measure kHeap = {"the heap in use", " bytes", &ProcessSize::heap, 32, 2048};
constexpr Measure kAddressSpace = {"the address space", " bytes", &ProcessSize::addressSpace, 4096,
                                   262144};

// What is called in each cycle, besides start and stop.
struct Calls {
  bool draw;
  bool mayWait;  // the draw
  std::vector<TextOperation> texts;
};

// Measures in this thread: on a busy machine, another thread would report late that its draw has ended.
// All calls together may take no more than half of the time.
template <typename Call>
bool IsQuick(const WatchedPlugin& plugin, std::size_t share, Call call) {
  const auto begin = std::chrono::steady_clock::now();
  const bool isDone = call();
  return isDone &&
         (std::chrono::steady_clock::now() - begin) * kLongWindow * share < plugin.Limit();
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
  Calls calls = {};
  if (plugin.StartWithBuiltIn()) {
    calls = {DrawsQuickly(plugin), MayWait(plugin), QuickTexts(plugin)};
  }
  plugin.Stop();
  return calls;
}

void RunCycle(WatchedPlugin& plugin, const Calls& calls) {
  plugin.RequireTime();
  if (plugin.StartWithBuiltIn()) {
    if (calls.draw && calls.mayWait) Draw(plugin, kDrawSize, 0);
    if (calls.draw && !calls.mayWait) DrawHere(plugin);
    for (const TextOperation text : calls.texts) ReadGuarded(plugin, text);
  }
  plugin.Stop();
}

void RunCycles(WatchedPlugin& plugin, std::size_t count, const Calls& calls) {
  for (std::size_t done = 0; done < count; ++done) RunCycle(plugin, calls);
}

// The least of each size during a window. What varies by chance, such as the stacks that the C library
// keeps for new threads, varies above a floor; a leak raises the floor.
ProcessSize RunWindow(WatchedPlugin& plugin, std::size_t cycles, const Calls& calls) {
  constexpr std::size_t kBetween = 10;
  static_assert(kShortWindow % kBetween == 0 && kLongWindow % kBetween == 0);
  ProcessSize floor = SizeOfThisProcess();
  for (std::size_t done = 0; done < cycles; done += kBetween) {
    RunCycles(plugin, kBetween, calls);
    const ProcessSize now = SizeOfThisProcess();
    for (const Measure& measure : {kFiles, kThreads, kMappings, kHeap, kAddressSpace}) {
      floor.*measure.size = std::min(floor.*measure.size, now.*measure.size);
    }
  }
  return floor;
}

// A leak grows by the same amount in each window. Something that is allocated once, long after the warm-up, or a cache
// that fills up, grows less and less.
void RequireNoGrowth(WatchedPlugin& plugin, std::size_t cycles, const Calls& calls,
                     std::vector<Measure> measures) {
  const ProcessSize first = RunWindow(plugin, cycles, calls);
  ProcessSize before = first;
  ProcessSize growthBefore = {};
  for (std::size_t window = 1; window < kMostWindows && !measures.empty(); ++window) {
    const ProcessSize after = RunWindow(plugin, cycles, calls);
    std::erase_if(measures, [&](const Measure& measure) {
      return after.*measure.size <= before.*measure.size + measure.SlackOf(cycles);
    });
    for (const Measure& grown : measures) {
      const std::size_t growth = after.*grown.size - before.*grown.size;
      const bool isSteady = window > 1 && 2 * growth >= growthBefore.*grown.size;
      Require(!isSteady, "Over " + std::to_string(window * cycles) + " uses, " + grown.what +
                             " grew steadily from " + std::to_string(first.*grown.size) + " to " +
                             std::to_string(after.*grown.size) + grown.unit + ".");
      growthBefore.*grown.size = growth;
    }
    before = after;
  }
}

// The number of cycles per window with which all windows take three quarters of the time. If that is
// too few to show a leak, the check ends as not examined.
std::size_t ChooseWindow(const WatchedPlugin& plugin, std::chrono::nanoseconds cycle) {
  const auto fitting = static_cast<std::size_t>(plugin.Limit() * 3 / 4 / kMostWindows / cycle);
  return std::clamp(fitting - fitting % kShortWindow, kShortWindow, kLongWindow);
}

// The C library keeps the stacks of ended threads, up to a total of 40 MiB, for new ones. Once the total is
// reached, the plug-in's threads no longer add to it.
void FillStackCache() {
  constexpr std::size_t kEnough = 64;  // with stacks of 640 KiB, which are small
  std::promise<void> gate;
  const std::shared_future<void> isOpen = gate.get_future();
  std::vector<std::thread> threads;
  try {
    while (threads.size() < kEnough) threads.emplace_back([isOpen] { isOpen.wait(); });
  } catch (const std::system_error&) {  // the system allows no more: fewer will do
  }
  gate.set_value();
  for (std::thread& thread : threads) thread.join();
}

// The C library first puts a block that is freed into a cache of the thread, and counts it as heap in use. Filling the
// cache here keeps it from growing by chance while the heap is watched.
void FillThreadCache() {
  constexpr std::size_t kSmallest = 24;
  constexpr std::size_t kLargest = 1032;
  constexpr std::size_t kBetweenSizes = 16;
  constexpr int kBlocksOfASize = 7;
  std::vector<void*> blocks;
  for (std::size_t size = kSmallest; size <= kLargest; size += kBetweenSizes) {
    for (int i = 0; i < kBlocksOfASize; ++i) blocks.push_back(std::malloc(size));
  }
  for (void* const block : blocks) std::free(block);
}

Finding CheckLoadCycles(WatchedPlugin& plugin) {
  ::mallopt(M_ARENA_MAX, 1);  // another arena, which a thread may get by chance, is 64 MiB
  FillStackCache();
  FillThreadCache();
  const Calls calls = ChooseCalls(plugin);
  const auto begin = std::chrono::steady_clock::now();
  RunCycles(plugin, kWarmUp, calls);
  const auto warmUp = std::chrono::steady_clock::now() - begin;
  RequireNoGrowth(plugin, kShortWindow, calls, {kFiles, kThreads});
  RequireNoGrowth(plugin, ChooseWindow(plugin, warmUp / kWarmUp), calls,
                  {kFiles, kThreads, kMappings, kHeap, kAddressSpace});
  return Passed();
}

}  // namespace

std::vector<Rule> CycleRules() {
  return {
      {"load-cycles", Severity::kError,
       "The process does not grow, however often the plug-in is used",
       "In Release, stop and free what the start, draws and texts started or allocated. A "
       "statically linked libstdc++ keeps some memory at each load. So does a dependency with a "
       "thread pool, such as OpenMP: end the pool, or do not use it.",
       CheckLoadCycles},
  };
}
