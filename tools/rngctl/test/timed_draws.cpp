#include "tools/rngctl/test/timed_draws.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>

namespace {

using Clock = std::chrono::steady_clock;

using Nanoseconds = std::int64_t;  // before the bytes of a draw
constexpr std::size_t kLargestDraw = 32768;
static_assert(kLargestDraw + sizeof(Nanoseconds) <= kLargestPiece);

// Of a text about the generator. All of them must fit into one piece.
constexpr std::size_t kLongestText = 4096;

constexpr int kSmallDraws = 1000;
constexpr std::chrono::seconds kTimeForSmallDraws(1);
constexpr std::chrono::milliseconds kQuick(100);

bool NeedsUser(std::uint32_t flags) { return (flags & kRngCapabilityNeedsUser) != 0; }

std::string Shortened(const std::string& text) {
  return text.size() <= kLongestText ? text : text.substr(0, kLongestText) + "...";
}

// Draws until there is enough, or the time is over.
class TimedDraws {
 public:
  TimedDraws(IRngProvider& provider, const std::optional<std::uint64_t>& wanted,
             const TakePiece& taker)
      : rng(provider),
        pass(taker),
        flags(rng.GetFlags()),
        left(GetMostBytes(wanted, flags)),
        most(NeedsUser(flags) ? kLargestDraw : kSmallDraw),
        end(wanted || NeedsUser(flags) ? Clock::time_point::max() : Clock::now() + kTimeToDraw) {}

  // A generator that does not report its device has accepted the one that was asked for.
  void SendFacts(const std::string& askedFor) const {
    const std::string device = ReadText(rng, &IRngProvider::GetHardwareId);
    const std::string text =
        Encode(SourceFacts{Shortened(ReadText(rng, &IRngProvider::GetName)),
                           Shortened(ReadText(rng, &IRngProvider::GetDescription)),
                           Shortened(device.empty() ? askedFor : device), flags});
    pass(SecretBytes(text.begin(), text.end()));
  }

  void DrawAll() {
    if (!NeedsUser(flags)) DrawSmall();
    while (left > 0 && Clock::now() < end) {
      Draw(static_cast<std::size_t>(std::min<std::uint64_t>(left, most)));
    }
  }

 private:
  void DrawSmall() {
    const auto endOfSmall = std::min(end, Clock::now() + kTimeForSmallDraws);
    for (int i = 0; i < kSmallDraws && left >= kSmallDraw && Clock::now() < endOfSmall; ++i) {
      Draw(kSmallDraw);
    }
  }

  // The bytes before the draw are zero, so that an unfilled part does not look like an earlier draw.
  void Draw(std::size_t size) {
    SecretBytes piece(sizeof(Nanoseconds) + size);
    const auto start = Clock::now();
    const bool hasDrawn = rng.Generate(piece.data() + sizeof(Nanoseconds), size);
    const auto time = Clock::now() - start;
    if (!hasDrawn) {
      throw Refusal(kNothingUsable, "The generator " +
                                        Quoted(ReadText(rng, &IRngProvider::GetName)) +
                                        " failed after " + std::to_string(drawn) + " bytes.");
    }
    const Nanoseconds number = std::chrono::nanoseconds(time).count();
    std::memcpy(piece.data(), &number, sizeof number);
    pass(piece);
    drawn += size;
    left -= size;
    if (size == most && time < kQuick) most = std::min(2 * most, kLargestDraw);
  }

  IRngProvider& rng;
  const TakePiece& pass;
  const std::uint32_t flags;
  std::uint64_t left;
  std::uint64_t drawn = 0;
  std::size_t most;  // to draw at once; grows while draws are quick
  const Clock::time_point end;
};

[[noreturn]] void RefuseInterference() {
  throw Refusal(kNothingUsable, "A plug-in interfered with the draw.",
                "Run \"rngctl doctor\" to find out which.");
}

}  // namespace

std::uint64_t GetMostBytes(const std::optional<std::uint64_t>& wanted, std::uint32_t flags) {
  return wanted.value_or(NeedsUser(flags) ? kBytesFromUser : kMostBytes);
}

void DrawAndTime(const GeneratorChoice& source, const std::optional<std::uint64_t>& wanted,
                 const TakePiece& pass) {
  WithGenerator(source, [&](IRngProvider& rng) {
    TimedDraws draws(rng, wanted, pass);
    draws.SendFacts(source.device);
    draws.DrawAll();
  });
}

SourceFacts ReadFacts(const SecretBytes& piece) {
  const auto facts = Decode<SourceFacts>(std::string(piece.begin(), piece.end()));
  if (!facts) RefuseInterference();
  return *facts;
}

TimedDraw ReadDraw(const SecretBytes& piece) {
  Nanoseconds time = 0;
  if (piece.size() <= sizeof time) RefuseInterference();
  std::memcpy(&time, piece.data(), sizeof time);
  return {std::chrono::nanoseconds(time), piece.data() + sizeof time, piece.size() - sizeof time};
}
