#include "tools/rngctl/commands/read/draw.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>

#include <rngaggregator/aggregator.h>
#include <rngaggregator/checked_rng.h>

namespace {

using Clock = std::chrono::steady_clock;

// The first piece is small, so that a slow source shows progress.
constexpr std::size_t kFirstPiece = 3UL * 256;
constexpr std::uint64_t kMostFromUser = 1U << 20;
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

// Draws everything at once, so that the user is asked once.
void DrawFromUser(IRngProvider& rng, const DrawRequest& request, const TakePiece& pass) {
  const std::string name = Quoted(ReadText(rng, &IRngProvider::GetName));
  if (request.size > kMostFromUser) {
    throw Refusal(kNegativeAnswer,
                  "The generator " + name + " needs the user, so at most " +
                      std::to_string(kMostFromUser) + " bytes can be read at once.",
                  "Read fewer bytes, or choose a generator that does not need the user.");
  }
  CheckedRng checked(&rng);
  IRngProvider* const source = request.isChecked ? &checked : &rng;
  const NoCore noCore;
  SecretBytes bytes(static_cast<std::size_t>(request.size));
  if (!source->Generate(bytes.data(), bytes.size())) {
    if (checked.Alarm() != RngHealthAlarm::kNone) RefuseDraw(rng, checked.Alarm(), 0);
    throw Refusal(kNegativeAnswer,
                  "The draw from the generator " + name + " was cancelled, or it failed.",
                  "To find out whether it can ask the user, run \"rngctl doctor\".");
  }
  for (std::size_t done = 0; done < bytes.size(); done += kLargestPiece) {
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(done);
    const std::size_t size = std::min(bytes.size() - done, kLargestPiece);
    pass(SecretBytes(first, first + static_cast<std::ptrdiff_t>(size)));
  }
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
  WithGenerator(request, [&](IRngProvider& rng) {
    const bool asksUser = IsInteractiveRng(ReadText(rng, &IRngProvider::GetName).c_str()) != 0;
    asksUser ? DrawFromUser(rng, request, pass) : DrawFrom(rng, request, pass);
  });
}
