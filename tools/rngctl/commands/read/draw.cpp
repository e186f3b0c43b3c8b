#include "tools/rngctl/commands/read/draw.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>

#include <rngaggregator/checked_rng.h>

namespace {

using Clock = std::chrono::steady_clock;

// The first piece is small, so that a slow source shows progress. It is large enough for any key, so
// that a user is asked only once.
constexpr std::size_t kFirstPiece = 3UL * 256;
constexpr auto kQuick = std::chrono::milliseconds(100);

std::string Describe(RngHealthAlarm alarm) {
  switch (alarm) {
    case RngHealthAlarm::kRepetition:
      return "nine equal bytes in a row";
    case RngHealthAlarm::kProportion:
      return "one value far too often in 512 bytes";
    case RngHealthAlarm::kBlock:
      return "16 bytes equal to the 16 before them";
    case RngHealthAlarm::kNone:
      break;
  }
  return "";
}

[[noreturn]] void RefuseDraw(IRngProvider& rng, RngHealthAlarm alarm, std::uint64_t done) {
  const std::string name = Quoted(ReadText(rng, &IRngProvider::GetName));
  const std::string place = " after " + std::to_string(done) + " bytes.";
  if (alarm == RngHealthAlarm::kNone) {
    throw Refusal(kNegativeAnswer, "The generator " + name + " failed" + place);
  }
  throw Refusal(kNegativeAnswer,
                "The generator " + name + " returned bytes that are not random (" +
                    Describe(alarm) + ")" + place,
                "Do not use its bytes, including those that it returned before. \"rngctl test\" "
                "examines it.");
}

void DrawFrom(IRngProvider& rng, const DrawRequest& request, const TakePiece& pass) {
  CheckedRng checked(&rng);
  IRngProvider* const source = request.isChecked ? &checked : &rng;
  const NoCore noCore;
  SecretBytes piece;
  std::size_t most = kFirstPiece;
  for (std::uint64_t done = 0; done < request.size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(request.size - done, most)));
    const auto start = Clock::now();
    if (!source->Generate(piece.data(), piece.size())) RefuseDraw(rng, checked.Alarm(), done);
    if (Clock::now() - start < kQuick) most = std::min(2 * most, kLargestPiece);
    pass(piece);
  }
}

}  // namespace

void Draw(const DrawRequest& request, const TakePiece& pass) {
  WithGenerator(request, [&](IRngProvider& rng) { DrawFrom(rng, request, pass); });
}
