#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"

#include <sstream>
#include <vector>

namespace {

constexpr char kSlow[] = "draws are slow but wait for nothing";

std::string Seconds(std::chrono::milliseconds time) {
  std::ostringstream text;
  text << std::chrono::duration<double>(time).count() << " s";
  return text.str();
}

// A Cancel with no draw in progress does not affect a later one.
Finding CheckIdleCancel(WatchedPlugin& plugin) {
  const bool isReliable = DrawsReliably(plugin);
  plugin.Cancel();
  if (!isReliable) return NotExamined("draws also fail without Cancel");
  if (Draw(plugin, 32, 0).answer) return Passed();
  return Failed("After a Cancel with no draw in progress, the next draw fails.");
}

Finding CheckDrawAfterCancel(WatchedPlugin& plugin) {
  WatchedDraw draw(plugin, 32, 0);
  const bool isEnded = draw.EndsWithin(plugin.Patience());
  if (isEnded && !draw.Answer()) return Failed("Cancelling one draw also ends the next one.");
  if (!isEnded) plugin.Cancel();
  return Passed();
}

// A draw that is slow but waits for nothing also returns true after Cancel, but ends by itself.
Finding CheckSlowDraw(WatchedPlugin& plugin) {
  const WatchedDraw draw(plugin, 32, 0);
  if (draw.EndsWithin(3 * plugin.Patience())) return NotExamined(kSlow);
  return Failed("A draw that Cancel ended returns true.");
}

// A draw that ends late may have ended by itself, without Cancel. One such draw is enough: if draws
// take turns, the other one needs its own time and that of the first.
bool AnyEndsWithin(std::chrono::milliseconds time, const std::vector<const WatchedDraw*>& draws) {
  constexpr auto kMoment = std::chrono::milliseconds(5);
  const auto end = std::chrono::steady_clock::now() + time;
  while (!draws.empty() && std::chrono::steady_clock::now() < end) {
    for (const WatchedDraw* draw : draws) {
      if (draw->EndsWithin(kMoment)) return true;
    }
  }
  return false;
}

Finding CheckCancelEndsDraws(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  WatchedDraw draw(plugin, 32, 0);
  WatchedDraw other(plugin, 32, 0);
  if (draw.EndsWithin(plugin.Patience())) {
    other.EndsWithin(
        plugin.Patience());  // one that begins late must not meet the Cancel that follows
    return CheckIdleCancel(plugin);
  }
  plugin.Cancel();
  bool hasSucceeded = false;
  std::vector<const WatchedDraw*> late;
  for (WatchedDraw* one : {&draw, &other}) {
    // The first draw has used up the time for both.
    if (!one->EndsWithin(late.empty() ? plugin.Patience() : std::chrono::milliseconds(0))) {
      late.push_back(one);
    } else if (one->Answer()) {
      hasSucceeded = true;
    }
  }
  if (AnyEndsWithin(2 * plugin.Patience(), late)) return NotExamined(kSlow);
  if (hasSucceeded) return CheckSlowDraw(plugin);
  if (late.empty()) return CheckDrawAfterCancel(plugin);
  return Failed("A waiting draw has not ended " + Seconds(3 * plugin.Patience()) +
                " after Cancel.");
}

// Perhaps only some draws fail, so several are made until one does. The last one has a size that the
// plug-in may refuse.
Finding CheckFailedDrawIsZero(WatchedPlugin& plugin) {
  constexpr int kDraws = 17;
  plugin.StartAvailable();
  bool isWaiting = false;
  for (int i = 0; i < kDraws && !isWaiting; ++i) {
    plugin.RequireTime();
    WatchedDraw draw(plugin, i + 1 < kDraws ? 1021 : kLargeDraw, 0xA5);
    isWaiting = !draw.EndsWithin(plugin.Patience());
    if (isWaiting) {
      plugin.Cancel();
      if (!draw.EndsWithin(plugin.Patience())) return NotExamined("Cancel does not end the draw");
    }
    if (draw.Answer()) continue;
    if (draw.Buffer().ContainsOnly(0)) return Passed();
    return Failed(std::string("After a draw that was ") + (isWaiting ? "cancelled" : "refused") +
                  ", the buffer is not all zero.");
  }
  return NotExamined("no draw fails on this machine");
}

}  // namespace

std::vector<Rule> CancelRules() {
  return {
      {"cancel", Severity::kError, "Cancel ends every waiting draw and no other",
       "Wake every waiting draw and let it return false; carry nothing over to later draws.",
       CheckCancelEndsDraws},
      {"failed-draw-is-zero", Severity::kError,
       "The buffer is all zero after a draw that failed or was cancelled",
       "Clear the whole buffer before returning false.", CheckFailedDrawIsZero},
  };
}
