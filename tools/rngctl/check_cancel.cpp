#include "checks.h"
#include "watched_draw.h"

#include <sstream>

namespace {

constexpr char kSlow[] = "draws are slow, but wait for nobody";

std::string Seconds(std::chrono::milliseconds time) {
  std::ostringstream text;
  text << std::chrono::duration<double>(time).count() << " s";
  return text.str();
}

// A Cancel that finds no draw does not reach a later one.
Finding CheckIdleCancel(WatchedPlugin& plugin) {
  const bool isReliable = DrawsReliably(plugin);
  plugin.Cancel();
  if (!isReliable) return NotExamined("draws fail also without Cancel");
  if (Draw(plugin, 32, 0).answer) return Passed();
  return Failed("After a Cancel that found no draw, the next draw fails.");
}

Finding CheckDrawAfterCancel(WatchedPlugin& plugin) {
  WatchedDraw draw(plugin, 32, 0);
  const bool isEnded = draw.EndsWithin(plugin.Patience());
  if (isEnded && !draw.Answer()) return Failed("The Cancel of one draw ends the next one, too.");
  if (!isEnded) plugin.Cancel();
  return Passed();
}

// A draw that is slow and waits for nobody also answers true after Cancel, but ends by itself.
Finding CheckSlowDraw(WatchedPlugin& plugin) {
  const WatchedDraw draw(plugin, 32, 0);
  if (draw.EndsWithin(3 * plugin.Patience())) return NotExamined(kSlow);
  return Failed("A draw that Cancel ended answers true.");
}

// What comes late may have come by itself.
Finding CheckLateDraw(WatchedPlugin& plugin, const WatchedDraw& draw) {
  const auto wait = 2 * plugin.Patience();
  if (draw.EndsWithin(wait)) return NotExamined(kSlow);
  return Failed("A draw that waits has not ended " + Seconds(wait + plugin.Patience()) +
                " after Cancel.");
}

}  // namespace

Finding CheckCancelEndsDraws(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  WatchedDraw draw(plugin, 32, 0);
  WatchedDraw other(plugin, 32, 0);
  if (draw.EndsWithin(plugin.Patience())) return CheckIdleCancel(plugin);
  plugin.Cancel();
  if (!draw.EndsWithin(plugin.Patience())) return CheckLateDraw(plugin, draw);
  if (!other.EndsWithin(plugin.Patience())) return CheckLateDraw(plugin, other);
  return draw.Answer() || other.Answer() ? CheckSlowDraw(plugin) : CheckDrawAfterCancel(plugin);
}

// Not all draws need fail: a few are made in the hope of one that does.
Finding CheckFailedDrawIsZero(WatchedPlugin& plugin) {
  constexpr int kDraws = 16;
  plugin.StartAvailable();
  bool isWaiting = false;
  for (int i = 0; i < kDraws && !isWaiting; ++i) {
    plugin.RequireTime();
    WatchedDraw draw(plugin, 1021, 0xA5);
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
  return NotExamined("no draw fails here");
}
