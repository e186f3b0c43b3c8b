#include "tools/rngctl/check/plugin/watched_draw.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <set>

namespace {

constexpr std::size_t kSizes[] = {1, 7, 32, 257, 4097};
constexpr unsigned char kFills[] = {0x00, 0xFF, 0xA5, 0x5A};

// A written byte equals the fill by chance with a probability of 2^-8. The sizes have fewer than 2^13
// bytes in all, so the probability that any byte shows only its fill in ten draws is below 2^-67.
constexpr std::size_t kDraws = 10;

void CheckFilling(WatchedPlugin& plugin, std::size_t size) {
  std::vector<bool> isWritten(size);
  for (std::size_t i = 0; i < kDraws; ++i) {
    plugin.RequireTime();
    const unsigned char fill = kFills[i % std::size(kFills)];
    const GuardedBuffer bytes = DrawBytes(plugin, size, fill);
    Require(bytes.IsIntactAround(),
            "A draw of " + Counted(size, "byte") + " writes outside the buffer.",
            "Write exactly as many bytes as requested.");
    for (std::size_t place = 0; place < size; ++place) {
      if (bytes.Data()[place] != fill) isWritten[place] = true;
    }
  }
  const auto place = std::find(isWritten.begin(), isWritten.end(), false) - isWritten.begin();
  Require(place == static_cast<std::ptrdiff_t>(size),
          "In " + std::to_string(kDraws) + " draws of " + Counted(size, "byte") + ", byte " +
              std::to_string(place + 1) + " was never written.");
}

// The probability that this many bytes in a row show only their fill in two large draws by chance is
// 2^-239.
constexpr int kSuspicious = 16;

// A slow large draw says nothing about the smaller ones that other checks make.
GuardedBuffer DrawMany(WatchedPlugin& plugin, unsigned char fill) {
  plugin.RequireTime();
  const std::string what = "a draw of " + std::to_string(kLargeDraw) + " bytes ";
  WatchedDraw draw(plugin, kLargeDraw, fill);
  if (!draw.EndsWithin(plugin.Patience())) {
    CancelDraws(plugin);
    draw.EndsWithin(plugin.Patience());
    throw EarlyEnd(Outcome::kNotExamined, what + "takes too long; allow more time with --timeout");
  }
  if (!draw.Answer()) throw EarlyEnd(Outcome::kNotExamined, what + "fails");
  Require(draw.Buffer().IsIntactAround(), "A" + what.substr(1) + "writes outside the buffer.",
          "Write exactly as many bytes as requested.");
  return draw.Buffer();
}

// A plug-in may ask its source only once, and what it gets may end far before the end of the buffer.
void CheckLargeFilling(WatchedPlugin& plugin) {
  constexpr unsigned char kFill = 0xA5;
  constexpr unsigned char kOtherFill = 0x5A;
  const GuardedBuffer bytes = DrawMany(plugin, kFill);
  const GuardedBuffer others = DrawMany(plugin, kOtherFill);
  int unwritten = 0;
  for (std::size_t place = 0; place < kLargeDraw; ++place) {
    const bool isWritten = bytes.Data()[place] != kFill || others.Data()[place] != kOtherFill;
    unwritten = isWritten ? 0 : unwritten + 1;
    Require(unwritten < kSuspicious,
            "In draws of " + std::to_string(kLargeDraw) + " bytes, the bytes after byte " +
                std::to_string(place + 1 - kSuspicious) + " are not written.");
  }
}

bool AreEqual(const GuardedBuffer& one, const GuardedBuffer& other) {
  return std::equal(one.Data(), one.Data() + one.Size(), other.Data());
}

Finding CheckDrawFillsBuffer(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  for (const std::size_t size : kSizes) CheckFilling(plugin, size);
  CheckLargeFilling(plugin);
  return Passed();
}

// The probability that this many random bytes have so few different values is below 2^-1000.
Finding CheckValues(WatchedPlugin& plugin) {
  constexpr std::size_t kBytes = 1024;
  constexpr std::size_t kFew = 64;
  plugin.StartAvailable();
  const GuardedBuffer bytes = DrawBytes(plugin, kBytes, 0);
  const std::size_t values = std::set<unsigned char>(bytes.Data(), bytes.Data() + kBytes).size();
  if (values > kFew) return Passed();
  return Failed("A draw of " + std::to_string(kBytes) + " bytes has only " +
                Counted(values, "different value") + ".");
}

// The probability that two honest draws of 32 bytes are equal is 2^-256.
Finding CheckDrawsDiffer(WatchedPlugin& plugin) {
  plugin.StartAvailable();
  const GuardedBuffer first = DrawBytes(plugin, 32, 0);
  const GuardedBuffer second = DrawBytes(plugin, 32, 0);
  Require(!AreEqual(first, second), "Two consecutive draws of 32 bytes are equal.");
  plugin.Stop();
  plugin.StartAvailable();
  const GuardedBuffer again = DrawBytes(plugin, 32, 0);
  Require(!AreEqual(first, again),
          "After a second start it draws the same bytes as after the first.");
  return Passed();
}

}  // namespace

std::vector<Rule> DrawnByteRules() {
  return {
      {"draw-fills-buffer", Severity::kError,
       "A draw writes every byte of the buffer and none outside it",
       "Continue until the buffer is full: a source may return fewer bytes than requested.",
       CheckDrawFillsBuffer},
      {"drawn-values", Severity::kError, "The bytes of a draw have many different values",
       "Return bytes in which every bit is random: a source of single bits needs eight of them for "
       "each byte.",
       CheckValues},
      {"draws-differ", Severity::kError, "Two draws differ, whether after one start or after two",
       "Take new bytes from the source for each draw, and seed any software generator from a "
       "source.",
       CheckDrawsDiffer},
  };
}
