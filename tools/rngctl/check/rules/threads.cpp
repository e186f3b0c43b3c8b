#include "tools/rngctl/check/plugin/guarded_buffer.h"
#include "tools/rngctl/check/plugin/guarded_text.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <array>
#include <future>
#include <set>
#include <vector>

namespace {

constexpr std::size_t kThreads = 4;
constexpr int kRounds = 200;
constexpr auto kEnough = std::chrono::milliseconds(200);

using Bytes = std::array<unsigned char, 16>;

struct Answers {
  std::string name;
  std::string description;
  std::string hardwareId;
  bool operator==(const Answers&) const = default;
};

// The results of GetFlags and SelectDevice may change, so they are not compared.
Answers Ask(WatchedPlugin& plugin) {
  plugin.GetFlags();
  plugin.SelectDevice(nullptr);
  return {ReadGuarded(plugin, &IRngProvider::GetName),
          ReadGuarded(plugin, &IRngProvider::GetDescription),
          ReadGuarded(plugin, &IRngProvider::GetHardwareId)};
}

// What is called besides the texts.
struct Calls {
  bool draw;
  bool askAgain;  // IsAvailable
  bool testSelf;
  bool mayWait;  // the draws
};

// A slow call would leave too little time for the others.
template <typename Call>
bool IsQuick(Call call) {
  constexpr auto kQuick = kEnough / 20;
  const auto begin = std::chrono::steady_clock::now();
  call();
  return std::chrono::steady_clock::now() - begin < kQuick;
}

// Another check examines what a single thread does.
void RequireDrawAfter(WatchedPlugin& plugin, Step step) {
  if (Draw(plugin, std::tuple_size_v<Bytes>, 0).answer) return;
  throw EarlyEnd(Outcome::kNotExamined, "draws fail after " + InWords(step));
}

// A self-test may draw, and wait as draws do.
Calls ChooseCalls(WatchedPlugin& plugin) {
  const bool draws = CanDraw(plugin) && DrawsReliably(plugin);
  Calls calls = {draws, IsQuick([&plugin] { plugin.IsAvailableInUse(); }), false, MayWait(plugin)};
  if (!draws) return calls;
  RequireDrawAfter(plugin, Step::kIsAvailableInUse);
  if (!plugin.IsGood(Step::kSelfTest)) return calls;
  calls.testSelf = IsQuick([&plugin] { plugin.SelfTest(); });
  RequireDrawAfter(plugin, Step::kSelfTest);
  return calls;
}

void RequireSame(const std::string& what, const std::string& alone, const std::string& together) {
  Require(alone == together, what + " reports " + Quoted(alone) + " when called alone, and " +
                                 Quoted(together) + " when other threads call.");
}

// What one of the threads saw.
struct Witness {
  std::vector<Bytes> draws;
  bool wasRefused = false;
  std::string fault;
  Outcome outcome = Outcome::kPassed;
};

void CallInTurn(WatchedPlugin& plugin, const Answers& expected, const Calls& calls,
                Witness& witness) {
  const Answers seen = Ask(plugin);
  RequireSame("GetName", expected.name, seen.name);
  RequireSame("GetDescription", expected.description, seen.description);
  RequireSame("GetHardwareId", expected.hardwareId, seen.hardwareId);
  if (calls.askAgain) plugin.IsAvailableInUse();
  if (calls.testSelf) plugin.SelfTest();
  if (!calls.draw) return;
  Bytes bytes;
  GuardedBuffer buffer(bytes.size(), 0);
  witness.wasRefused = !plugin.Generate(buffer.Data(), buffer.Size());
  if (witness.wasRefused) return;
  std::copy_n(buffer.Data(), bytes.size(), bytes.begin());
  witness.draws.push_back(bytes);
}

void CallForAWhile(WatchedPlugin& plugin, const Answers& expected, const Calls& calls,
                   Witness& witness) {
  const auto end = std::chrono::steady_clock::now() + kEnough;
  try {
    for (int i = 0; i < kRounds && !witness.wasRefused && std::chrono::steady_clock::now() < end;
         ++i) {
      CallInTurn(plugin, expected, calls, witness);
    }
  } catch (const EarlyEnd& early) {
    witness.fault = early.what();
    witness.outcome = early.outcome;
  }
}

bool AllDiffer(const std::vector<Bytes>& draws) {
  return std::set<Bytes>(draws.begin(), draws.end()).size() == draws.size();
}

// Bytes of few values, such as those of a single random bit each, repeat whoever draws them. The
// probability that an honest draw has that few is below 2^-39.
bool HasFewValues(const Bytes& draw) {
  constexpr std::size_t kFew = 7;
  return std::set<unsigned char>(draw.begin(), draw.end()).size() <= kFew;
}

// If one thread gets the same bytes twice, the other threads are not the cause. The probability that
// two of the 800 draws of 16 bytes are equal by chance is 2^-108.
void RequireOwnDraws(const std::array<Witness, kThreads>& witnesses) {
  std::vector<Bytes> all;
  for (const Witness& witness : witnesses) {
    if (std::any_of(witness.draws.begin(), witness.draws.end(), HasFewValues)) {
      throw EarlyEnd(Outcome::kNotExamined,
                     "the bytes of its draws have few values, so equal draws prove nothing");
    }
    if (!AllDiffer(witness.draws)) return;
    all.insert(all.end(), witness.draws.begin(), witness.draws.end());
  }
  Require(AllDiffer(all), "Two threads that draw at the same time get the same bytes.");
}

// If the source ran out, the other threads are not the cause.
void RequireDraws(WatchedPlugin& plugin, const std::array<Witness, kThreads>& witnesses) {
  const bool wasRefused = std::any_of(witnesses.begin(), witnesses.end(),
                                      [](const Witness& witness) { return witness.wasRefused; });
  if (!wasRefused) return;
  plugin.FailUnlessRunOut(
      DrawsReliably(plugin)
          ? "Generate returns true when called alone, and false when other threads call it, too."
          : "After calls from several threads, draws fail, even when called alone.",
      true);
}

// Calls without draws prove little. The reason reported is the one why draws fail.
Finding TellWhyNothingIsDrawn(WatchedPlugin& plugin) {
  DrawBytes(plugin, std::tuple_size_v<Bytes>, 0);
  return NotExamined("draws sometimes fail even when called alone");
}

// The threads may have to wait for each other. Even then one round of calls by all of them may take no
// more than half of the time.
void RequireQuickCalls(WatchedPlugin& plugin, bool draws) {
  const auto begin = std::chrono::steady_clock::now();
  Ask(plugin);
  if (draws) Draw(plugin, std::tuple_size_v<Bytes>, 0);
  if ((std::chrono::steady_clock::now() - begin) * kThreads * 2 < plugin.Limit()) return;
  throw EarlyEnd(Outcome::kNotExamined, "its calls take too long; allow more time with --timeout");
}

// A draw that is allowed to wait is cancelled. If threads wait for each other, they never end, and the
// parent sees that.
void WaitFor(WatchedPlugin& plugin, const std::vector<std::future<void>>& threads) {
  const auto end = std::chrono::steady_clock::now() + kEnough + plugin.Patience();
  for (const std::future<void>& thread : threads) {
    if (thread.wait_until(end) == std::future_status::ready) continue;
    CancelDraws(plugin);
    EndBecauseDrawsWait();
  }
}

std::array<Witness, kThreads> CallTogether(WatchedPlugin& plugin, const Answers& expected,
                                           const Calls& calls) {
  std::array<Witness, kThreads> witnesses;
  std::vector<std::future<void>> threads;  // each joins its thread at its end
  for (Witness& witness : witnesses) {
    threads.push_back(std::async(std::launch::async, [&plugin, &expected, &calls, &witness] {
      CallForAWhile(plugin, expected, calls, witness);
    }));
  }
  if (calls.draw && calls.mayWait) WaitFor(plugin, threads);
  for (std::future<void>& thread : threads) thread.get();
  return witnesses;
}

Finding CheckConcurrentCalls(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const Answers expected = Ask(plugin);
  const Calls calls = ChooseCalls(plugin);
  if (Ask(plugin) != expected) return NotExamined("it answers differently even when called alone");
  RequireQuickCalls(plugin, calls.draw);
  plugin.BeginLongStep(Step::kConcurrentCalls);
  const std::array<Witness, kThreads> witnesses = CallTogether(plugin, expected, calls);
  plugin.EndLongStep();
  for (const Witness& witness : witnesses) {
    if (witness.outcome != Outcome::kPassed) throw EarlyEnd(witness.outcome, witness.fault);
  }
  RequireDraws(plugin, witnesses);
  RequireOwnDraws(witnesses);
  return calls.draw ? Passed() : TellWhyNothingIsDrawn(plugin);
}

}  // namespace

std::vector<Rule> ThreadRules() {
  return {
      {"concurrent-calls", Severity::kError, "Several threads may call it at the same time",
       "Protect what the calls share, such as buffers, with a lock, and release the lock on every "
       "path.",
       CheckConcurrentCalls},
  };
}
