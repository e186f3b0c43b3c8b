#include "tools/rngctl/check/looks/faults.h"
#include "tools/rngctl/check/looks/known_blocks.h"
#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"

#include <algorithm>
#include <cstring>

// The probability that a perfect source fails is below 4 * 10^-10 in a whole run. The parts, each computed
// beside its test: unwritten bytes 1.1 * 10^-12, bytes that are the same in seven draws 2.7 * 10^-10, runs
// and counters 5 * 10^-13, blocks 3.6 * 10^-11, bits 6.4 * 10^-11, byte values 2.4 * 10^-12.

namespace {

// Whole blocks come first, because a slow source may not get any further. Later starts make the same calls,
// so that a generator with a fixed seed repeats some blocks.
constexpr std::size_t kSizes[] = {16, 1, 2, 15, 17, 32, 255, 256, 4096, kLargeDraw};
constexpr std::size_t kLaterSizes[] = {16, 1, 2, 15, 17, 32, 255, 256};

// The first start gets a half of the time limit, each of the two later ones a sixth.
constexpr int kFirstPart = 2;
constexpr int kLaterPart = 6;

SipKey KeyOf(const WatchedPlugin& plugin) {
  SipKey key = {};
  std::memcpy(key.data(), plugin.RunKey().data(), std::min(key.size(), plugin.RunKey().size()));
  return key;
}

// Random contents for the buffers, computed from the key: they do not depend on what the plug-in draws, even
// if that comes from the system.
class Fills {
 public:
  explicit Fills(const SipKey& runKey) : key(runKey) {}

  Bytes Next(std::size_t size) {
    Bytes fill(size);
    for (std::size_t place = 0; place < size; place += sizeof count) {
      ++count;
      const std::uint64_t word = SipHash(key, &count, sizeof count);
      std::memcpy(&fill[place], &word, std::min(size - place, sizeof word));
    }
    return fill;
  }

 private:
  const SipKey key;
  std::uint64_t count = 0;
};

using Clock = std::chrono::steady_clock;

// Draws from a started plug-in until a draw fails or takes long, or the time is over.
class Source {
 public:
  Source(WatchedPlugin& watched, Clock::duration time)
      : plugin(watched), fills(KeyOf(watched)), end(Clock::now() + time) {}

  DrawsOfSize Draw(std::size_t size) {
    DrawsOfSize drawn{size};
    if (ExpectedTime(size) > plugin.Patience()) whyEnded = kTooLong;
    while (!HasEnded() && drawn.draws.size() < kDrawsOfSize) {
      if (auto draw = DrawOnce(size)) drawn.draws.push_back(std::move(*draw));
    }
    return drawn;
  }

  bool HasEnded() const { return !whyEnded.empty(); }
  const std::string& WhyEnded() const { return whyEnded; }
  /// The last draw was cancelled, and may not have ended.
  bool HasWaited() const { return hasWaited; }

 private:
  static constexpr char kTooLong[] = "it takes too long; allow more time with --timeout";

  // As if the time of a draw were proportional to its size.
  Clock::duration ExpectedTime(std::size_t size) const { return fastest * (size / lastSize); }

  std::optional<DrawnBytes> DrawOnce(std::size_t size) {
    DrawnBytes bytes{fills.Next(size), {}};
    const Clock::time_point start = Clock::now();
    WatchedDraw draw(plugin, GuardedBuffer(bytes.before));
    if (!draw.EndsWithin(plugin.Patience())) {
      hasWaited = true;
      whyEnded = kDrawsWait;
      CancelDraws(plugin);
      draw.EndsWithin(plugin.Patience());
      return std::nullopt;
    }
    const Clock::duration time = Clock::now() - start;
    fastest = size == lastSize ? std::min(fastest, time) : time;
    lastSize = size;
    if (Clock::now() > end) whyEnded = kTooLong;
    if (!draw.Answer()) {
      whyEnded = "Generate returns false";
      return std::nullopt;
    }
    bytes.after.assign(draw.Buffer().Data(), draw.Buffer().Data() + size);
    return bytes;
  }

  WatchedPlugin& plugin;
  Fills fills;
  const Clock::time_point end;
  std::size_t lastSize = 1;
  Clock::duration fastest = {};  // of those of that size
  std::string whyEnded = {};
  bool hasWaited = false;
};

void RequireNone(const std::optional<Fault>& fault) {
  if (fault) throw EarlyEnd(Outcome::kFailed, fault->found, fault->fix);
}

void Judge(const DrawsOfSize& drawn, KnownBlocks& blocks) {
  RequireNone(FindUnwritten(drawn));
  if (drawn.size < kSmallestJudged) return;
  RequireNone(FindConstant(drawn));
  RequireNone(FindPattern(drawn));
  RequireNone(blocks.Add(drawn));
  RequireNone(FindBias(drawn));
}

// A source that is slow, or has few bytes, is judged by what it returns. All draws of one size are enough.
void JudgeFirstStart(Source& source, KnownBlocks& blocks) {
  bool isEnough = false;
  for (const std::size_t size : kSizes) {
    const DrawsOfSize drawn = source.Draw(size);
    Judge(drawn, blocks);
    isEnough = isEnough || (size >= kSmallestJudged && drawn.draws.size() == kDrawsOfSize);
    if (source.HasEnded()) break;
  }
  if (!isEnough) throw EarlyEnd(Outcome::kNotExamined, source.WhyEnded());
}

void JudgeLaterStart(WatchedPlugin& plugin, const KnownBlocks& blocks, const std::string& when) {
  Source source(plugin, plugin.Limit() / kLaterPart);
  for (const std::size_t size : kLaterSizes) {
    RequireNone(blocks.Find(source.Draw(size), when));
    if (source.HasEnded()) return;
  }
}

// The parent runs this twice. The second process gets the blocks of the first.
Finding CheckDrawsLookRandom(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  if (plugin.DrawsWait()) return NotExamined(kDrawsWait);
  KnownBlocks blocks(KeyOf(plugin));
  if (!plugin.EarlierBlocks().empty()) {
    blocks.AddEarlier(plugin.EarlierBlocks());
    JudgeLaterStart(plugin, blocks, "In a second process it repeats what it drew in the first");
    return Passed();
  }
  Source source(plugin, plugin.Limit() / kFirstPart);
  JudgeFirstStart(source, blocks);
  if (!source.HasWaited()) {
    plugin.Stop();
    plugin.StartAvailable();
    JudgeLaterStart(plugin, blocks, "After a second start it repeats what it drew after the first");
  }
  Record([&blocks](Transcript& transcript) { transcript.blocks = blocks.Hashes(); });
  return Passed();
}

}  // namespace

std::vector<Rule> LooksRules() {
  return {
      {"draws-look-random", Severity::kError,
       "Drawn bytes are new, do not repeat, and have all values equally often", "",
       CheckDrawsLookRandom},
  };
}
