#include "tools/rngctl/commands/read/draw.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/commands/read/combined.h"
#include "tools/rngctl/commands/read/pieces.h"
#include "tools/rngctl/commands/read/record.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <rngaggregator/aggregator.h>
#include <rngaggregator/checked_rng.h>

namespace {

// A generator with the text for its failures.
struct Source {
  IRngProvider& rng;
  const std::string name;
  const bool asksUser;
};

[[noreturn]] void RefuseDraw(const Source& source, RngHealthAlarm alarm, std::uint64_t done) {
  if (alarm == RngHealthAlarm::kNone && source.asksUser) {
    throw Refusal(kNegativeAnswer,
                  "The draw from the generator " + source.name + " was cancelled, or it failed.",
                  "To find out whether it can ask the user, run \"rngctl doctor\".");
  }
  const std::string place = " after " + std::to_string(done) + " bytes.";
  if (alarm == RngHealthAlarm::kNone) {
    throw Refusal(kNegativeAnswer, "The generator " + source.name + " failed" + place);
  }
  throw Refusal(kNegativeAnswer,
                "The generator " + source.name + " returned bytes that are not random (" +
                    RngDrawCheck::Describe(alarm) + ")" + place,
                "Do not use its bytes, including those that it returned before. \"rngctl test\" "
                "examines it.");
}

void DrawFrom(IRngProvider& rng, const DrawRequest& request, const TakePiece& pass) {
  const std::string name = ReadText(rng, &IRngProvider::GetName);
  const Source source{rng, Quoted(name), IsInteractiveRng(name.c_str()) != 0};
  CheckedRng checked(&rng);
  IRngProvider* const drawn = request.isChecked ? &checked : &rng;
  std::uint64_t draws = 0;
  const FillPiece fill = [&](SecretBytes& piece, std::uint64_t done) {
    if (!drawn->Generate(piece.data(), piece.size())) RefuseDraw(source, checked.Alarm(), done);
    ++draws;
  };
  if (source.asksUser) {
    DrawAtOnce(request.size, "The generator " + source.name, fill, pass);
  } else {
    DrawInPieces(request.size, fill, pass);
  }
  if (!request.isRecorded) return;
  RecordedSource recorded{name, ReadText(rng, &IRngProvider::GetHardwareId), &rng};
  recorded.draws = draws;
  recorded.bytes = request.size;
  recorded.isChecked = request.isChecked;
  PassRecord({request.size, false, 1, draws}, {recorded}, pass);
}

}  // namespace

void Draw(const DrawRequest& request, const TakePiece& pass) {
  if (!request.from.empty()) return DrawCombined(request, pass);
  WithGenerator(request, [&](IRngProvider& rng) { DrawFrom(rng, request, pass); });
}
