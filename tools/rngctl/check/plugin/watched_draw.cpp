#include "tools/rngctl/check/plugin/watched_draw.h"

#include <sstream>

namespace {

// Cancels a draw that waits, and records for the other checks that draws wait.
void RequireEnd(WatchedPlugin& plugin, const WatchedDraw& draw) {
  if (draw.EndsWithin(plugin.Patience())) return;
  Record([](Transcript& transcript) { transcript.drawsWait = true; });
  CancelDraws(plugin);
  draw.EndsWithin(plugin.Patience());
  EndBecauseDrawsWait();
}

}  // namespace

WatchedDraw::WatchedDraw(WatchedPlugin& plugin, const GuardedBuffer& before)
    : buffer(std::make_shared<GuardedBuffer>(before)) {
  std::packaged_task<bool()> draw(
      [&plugin, memory = buffer] { return plugin.Generate(memory->Data(), memory->Size()); });
  answer = draw.get_future();
  thread = std::thread(std::move(draw));
}

// If the draw never ends, the thread ends with the child, which exits soon.
WatchedDraw::~WatchedDraw() {
  if (!answer.valid() || EndsWithin(std::chrono::milliseconds(0))) {
    thread.join();
  } else {
    thread.detach();
  }
}

bool WatchedDraw::EndsWithin(std::chrono::milliseconds time) const {
  return answer.wait_for(time) == std::future_status::ready;
}

bool WatchedDraw::Answer() { return answer.get(); }

std::string InSeconds(std::chrono::milliseconds time) {
  std::ostringstream text;
  text << std::chrono::duration<double>(time).count() << " s";
  return text.str();
}

// In a thread of its own, because it may wait for a lock that the draw never releases.
void CancelDraws(WatchedPlugin& plugin) {
  std::packaged_task<void()> call([&plugin] { plugin.Cancel(); });
  std::future<void> end = call.get_future();
  std::thread(std::move(call)).detach();
  if (end.wait_for(2 * plugin.Patience()) == std::future_status::ready) return end.get();
  throw EarlyEnd(
      Outcome::kFailed,
      "While a draw waits, Cancel does not return within " + InSeconds(2 * plugin.Patience()) + ".",
      kCancelFix, Severity::kError);
}

Drawn Draw(WatchedPlugin& plugin, std::size_t size, unsigned char fill) {
  if (plugin.DrawsWait()) throw EarlyEnd(Outcome::kNotExamined, kDrawsWait);
  WatchedDraw draw(plugin, size, fill);
  RequireEnd(plugin, draw);
  return {draw.Answer(), draw.Buffer()};
}

GuardedBuffer DrawBytes(WatchedPlugin& plugin, std::size_t size, unsigned char fill) {
  const Drawn drawn = Draw(plugin, size, fill);
  if (!drawn.answer) throw EarlyEnd(Outcome::kNotExamined, "Generate returns false");
  return drawn.buffer;
}

void EndBecauseDrawsWait() {
  Record([](Transcript& transcript) { transcript.drawsWait = true; });
  throw EarlyEnd(Outcome::kNotExamined, kDrawsWait);
}

bool MayWait(WatchedPlugin& plugin) {
  return plugin.IsGood(Step::kGetFlags) &&
         (plugin.GetFlags() & (kRngCapabilityNeedsUser | kRngCapabilityMayBlock)) != 0;
}

void RequireDraw(WatchedPlugin& plugin, const std::string& fault) {
  if (!Draw(plugin, 32, 0).answer) plugin.FailUnlessRunOut(fault, false);
}

Finding Repeat(WatchedPlugin& plugin, const SourceCalls& calls) {
  plugin.StartAvailable();
  for (std::uint64_t done = 0; done < calls.selfTests; ++done) {
    plugin.RequireTime();
    plugin.SelfTest();
  }
  for (const auto& [size, count] : calls.draws) {
    for (std::uint64_t done = 0; done < count; ++done) {
      plugin.RequireTime();
      if (!Draw(plugin, size, 0).answer) return Failed("Generate returns false.");
    }
  }
  return Passed();
}

bool DrawsReliably(WatchedPlugin& plugin) {
  constexpr int kFew = 8;
  for (int i = 0; i < kFew; ++i) {
    plugin.RequireTime();
    if (!Draw(plugin, 32, 0).answer) return false;
  }
  return true;
}

bool CanDraw(const WatchedPlugin& plugin) {
  return !plugin.DrawsWait() && plugin.IsGood(Step::kGenerate);
}
