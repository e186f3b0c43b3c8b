#include "tools/rngctl/check/plugin/watched_draw.h"

namespace {

constexpr char kWaits[] = "a draw takes long, or waits for a user or a device";

// Cancels a draw that waits, and records for the other checks that draws wait.
void RequireEnd(WatchedPlugin& plugin, const WatchedDraw& draw) {
  if (draw.EndsWithin(plugin.Patience())) return;
  Record([](Transcript& transcript) { transcript.drawsWait = true; });
  plugin.Cancel();
  draw.EndsWithin(plugin.Patience());
  throw EarlyEnd(Outcome::kNotExamined, kWaits);
}

}  // namespace

WatchedDraw::WatchedDraw(WatchedPlugin& plugin, std::size_t size, unsigned char fill)
    : buffer(std::make_shared<GuardedBuffer>(size, fill)) {
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

Drawn Draw(WatchedPlugin& plugin, std::size_t size, unsigned char fill) {
  if (plugin.DrawsWait()) throw EarlyEnd(Outcome::kNotExamined, kWaits);
  WatchedDraw draw(plugin, size, fill);
  RequireEnd(plugin, draw);
  return {draw.Answer(), draw.Buffer()};
}

GuardedBuffer DrawBytes(WatchedPlugin& plugin, std::size_t size, unsigned char fill) {
  const Drawn drawn = Draw(plugin, size, fill);
  if (!drawn.answer) throw EarlyEnd(Outcome::kNotExamined, "Generate returns false");
  return drawn.buffer;
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
