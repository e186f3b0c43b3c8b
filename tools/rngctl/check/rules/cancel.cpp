#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"

#include <memory>
#include <vector>

namespace {

constexpr char kSlow[] = "draws are slow but wait for nothing";
constexpr std::size_t kSmallDraw = 32;

using Draws = std::vector<std::unique_ptr<WatchedDraw>>;

Draws Begin(WatchedPlugin& plugin, std::size_t count, std::size_t size) {
  Draws draws;
  while (draws.size() < count) draws.push_back(std::make_unique<WatchedDraw>(plugin, size, 0));
  return draws;
}

// The result of the search for a draw that waits.
struct Search {
  Draws waiting;
  std::size_t size = kSmallDraw;  // of those
  bool allSucceed = true;         // the small draws that did not wait
};

// Makes draws at the same time. True when any of them waits.
bool Try(WatchedPlugin& plugin, std::size_t count, std::size_t size, Search& search) {
  plugin.RequireTime();
  for (auto& draw : Begin(plugin, count, size)) {
    // Waiting for the first draw has used up the time for all of them.
    const bool isFirst = search.waiting.empty();
    if (!draw->EndsWithin(isFirst ? plugin.Patience() : std::chrono::milliseconds(0))) {
      search.waiting.push_back(std::move(draw));
    } else if (size == kSmallDraw && !draw->Answer()) {
      search.allSucceed = false;
    }
  }
  search.size = size;
  return !search.waiting.empty();
}

// A Cancel with no draw in progress does not affect a later one.
void RequireNoEffectWhenIdle(WatchedPlugin& plugin, bool drawsSucceed) {
  plugin.Cancel();
  if (!drawsSucceed) throw EarlyEnd(Outcome::kNotExamined, "draws also fail without Cancel");
  RequireDraw(plugin, "After a Cancel with no draw in progress, the next draw fails.");
}

// A draw that takes long because of its size waits for nothing.
void TryLargeDraws(WatchedPlugin& plugin, Search& search) {
  constexpr std::size_t kMedium = 4096;
  constexpr int kFactor = 2 * kLargeDraw / kMedium;
  const auto begin = std::chrono::steady_clock::now();
  if (Try(plugin, 1, kMedium, search)) return;
  const auto medium = std::chrono::steady_clock::now() - begin;
  if (kFactor * medium < plugin.Patience()) Try(plugin, 1, kLargeDraw, search);
}

// A plug-in may have some bytes in store, so perhaps only a later or a large draw waits.
Search FindDrawsThatWait(WatchedPlugin& plugin) {
  constexpr int kMore = 8;
  Search search;
  if (Try(plugin, 2, kSmallDraw, search)) return search;
  for (int i = 0; i < kMore; ++i) {
    if (Try(plugin, 1, kSmallDraw, search)) return search;
  }
  RequireNoEffectWhenIdle(plugin, search.allSucceed);
  TryLargeDraws(plugin, search);
  return search;
}

Finding CheckDrawAfterCancel(WatchedPlugin& plugin, std::size_t size) {
  WatchedDraw draw(plugin, size, 0);
  const bool isEnded = draw.EndsWithin(plugin.Patience());
  if (isEnded && !draw.Answer()) return Failed("Cancelling one draw also ends the next one.");
  if (!isEnded) CancelDraws(plugin);
  return Passed();
}

// A draw that is slow but waits for nothing may go on after Cancel. Cancel itself may not wait for it.
Finding CheckSlowDraw(WatchedPlugin& plugin, std::size_t size) {
  const auto begin = std::chrono::steady_clock::now();
  {
    const WatchedDraw draw(plugin, size, 0);
    if (!draw.EndsWithin(3 * plugin.Patience())) {
      return Failed("A draw that Cancel ended returns true.");
    }
  }
  const auto half = (std::chrono::steady_clock::now() - begin) / 2;
  if (half < plugin.Patience() / 2) return NotExamined(kSlow);  // only some draws are slow
  const WatchedDraw draw(plugin, size, 0);
  draw.EndsWithin(std::chrono::duration_cast<std::chrono::milliseconds>(half / 8));
  const auto call = std::chrono::steady_clock::now();
  CancelDraws(plugin);
  const bool isEnded = draw.EndsWithin(std::chrono::milliseconds(0));
  if (!isEnded || std::chrono::steady_clock::now() - call < half) return NotExamined(kSlow);
  return Failed("Cancel returns only when the draw in progress has ended.", kCancelFix);
}

// A draw that ends late may have ended by itself, without Cancel. One such draw is enough: if draws
// take turns, the other one needs its own time and that of the first.
bool AnyEndsWithin(std::chrono::milliseconds time, const Draws& draws) {
  constexpr auto kMoment = std::chrono::milliseconds(5);
  Record([](Transcript&) {});  // the parent takes a long silence for a call that does not return
  const auto end = std::chrono::steady_clock::now() + time;
  while (!draws.empty() && std::chrono::steady_clock::now() < end) {
    for (const auto& draw : draws) {
      if (draw->EndsWithin(kMoment)) return true;
    }
  }
  return false;
}

Finding CheckCancelEndsDraws(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  Search search = FindDrawsThatWait(plugin);
  if (search.waiting.empty()) return Passed();
  CancelDraws(plugin);
  bool hasSucceeded = false;
  Draws late;
  for (auto& draw : search.waiting) {
    // The first draw has used up the time for all.
    if (!draw->EndsWithin(late.empty() ? plugin.Patience() : std::chrono::milliseconds(0))) {
      late.push_back(std::move(draw));
    } else if (draw->Answer()) {
      hasSucceeded = true;
    }
  }
  const bool endsLate = AnyEndsWithin(2 * plugin.Patience(), late);
  if (hasSucceeded) return CheckSlowDraw(plugin, search.size);
  if (endsLate) return NotExamined(kSlow);
  if (late.empty()) return CheckDrawAfterCancel(plugin, search.size);
  return Failed("A waiting draw does not end within " + InSeconds(3 * plugin.Patience()) +
                " of Cancel.");
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
      CancelDraws(plugin);
      if (!draw.EndsWithin(plugin.Patience())) return NotExamined("Cancel does not end the draw");
    }
    if (draw.Answer()) continue;
    if (draw.Buffer().ContainsOnly(0)) return Passed();
    return Failed(std::string("After a draw that was ") + (isWaiting ? "cancelled" : "refused") +
                  ", the buffer is not all zero.");
  }
  return NotExamined(isWaiting ? kSlow : "no draw fails on this machine");
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
