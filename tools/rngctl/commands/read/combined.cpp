#include "tools/rngctl/commands/read/combined.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/commands/read/pieces.h"
#include "tools/rngctl/commands/read/record.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <iostream>

#include <rngaggregator/aggregator.h>

namespace {

using rng::CombinedSource;
using rng::SourceOutcome;
using rng::SourceResult;
using Sources = std::vector<CombinedSource>;
using Outcomes = std::vector<SourceOutcome>;

constexpr std::uint64_t kBytesPerDraw = 64;  // from each source

std::string AdviceFor(SourceResult result) {
  switch (result) {
    case SourceResult::kMissing:
      return "Run \"rngctl list\" to see the usable ones, and \"rngctl doctor\" to find out why it "
             "is missing.";
    case SourceResult::kDeviceRefused:
      return "\"rngctl list\" shows the devices of generators that report them, and their "
             "problems.";
    case SourceResult::kAlarm:
      return "Do not use its bytes. \"rngctl test\" examines it.";
    default:
      return "Run \"rngctl doctor\" to find out why.";
  }
}

bool IsFailure(const SourceOutcome& outcome) {
  return outcome.result != SourceResult::kUsed && outcome.result != SourceResult::kNotAsked;
}

// Names every source that failed; the last one ended the draw.
[[noreturn]] void RefuseDraw(const Outcomes& outcomes, std::size_t need) {
  std::string sentences;
  std::string advice;
  if (need < outcomes.size()) {
    sentences = need == 1 ? "None of the generators can be used."
                          : "Fewer than " + std::to_string(need) + " generators can be used.";
  }
  for (const SourceOutcome& outcome : outcomes) {
    if (!IsFailure(outcome)) continue;
    sentences += (sentences.empty() ? "" : " ") + Explain(outcome);
    advice = AdviceFor(outcome.result);
  }
  if (!advice.empty()) throw Refusal(kNegativeAnswer, sentences, advice);
  throw Refusal(kNegativeAnswer, "The draws could not be combined: out of memory.");
}

// Users who cancel want no result, even if the other generators are enough. A generator that cannot ask is missing,
// which is no failure.
void RequireNoCancellation(const Outcomes& outcomes) {
  for (const SourceOutcome& outcome : outcomes) {
    const bool asksUser = IsInteractiveRng(outcome.kind.c_str()) != 0;
    if (!asksUser || outcome.result != SourceResult::kFailed) continue;
    throw Refusal(kNegativeAnswer, Explain(outcome), AdviceFor(outcome.result));
  }
}

// Before anybody is asked for anything.
void RequirePresence(const Sources& sources, std::size_t need) {
  Outcomes outcomes;
  for (const CombinedSource& source : sources) {
    const SourceResult result = source.provider ? SourceResult::kNotAsked : SourceResult::kMissing;
    outcomes.push_back({source.kind, source.device, result, RngHealthAlarm::kNone, ""});
  }
  const auto missing = std::count_if(outcomes.begin(), outcomes.end(), IsFailure);
  if (static_cast<std::size_t>(missing) > sources.size() - need) RefuseDraw(outcomes, need);
}

std::string DeviceOf(const CombinedSource& source) {
  if (!source.device.empty() || !source.provider) return source.device;
  return ReadText(*source.provider, &IRngProvider::GetHardwareId);
}

class CombinedDraw {
 public:
  CombinedDraw(const Sources& sources, std::size_t needed)
      : need(needed), combined(sources, needed) {
    for (const CombinedSource& source : sources) {
      recorded.push_back({source.kind, DeviceOf(source), source.provider});
    }
  }

  void Fill(SecretBytes& piece) {
    Outcomes outcomes;
    if (!combined.Generate(piece.data(), piece.size(), outcomes)) RefuseDraw(outcomes, need);
    RequireNoCancellation(outcomes);
    ++draws;
    for (std::size_t i = 0; i < recorded.size(); ++i) {
      const bool isUsed = outcomes[i].result == SourceResult::kUsed;
      recorded[i].draws += isUsed ? 1 : 0;
      recorded[i].bytes += isUsed ? kBytesPerDraw : 0;
      if (!isUsed) recorded[i].failure = Explain(outcomes[i]);
    }
  }

  void ReportFailures() const {
    for (const RecordedSource& source : recorded) {
      if (source.failure.empty()) continue;
      std::cerr << "rngctl: " << Printable(source.failure)
                << (source.draws == 0 ? " It is not part of the result.\n"
                                      : " It was left out of some of the draws.\n");
    }
  }

  void Record(std::uint64_t size, const TakePiece& pass) const {
    PassRecord({size, true, need, draws}, recorded, pass);
  }

 private:
  const std::size_t need;
  rng::CombinedRng combined;
  std::vector<RecordedSource> recorded;
  std::uint64_t draws = 0;
};

bool AsksUser(const Sources& sources) {
  return std::any_of(sources.begin(), sources.end(), [](const CombinedSource& source) {
    return IsInteractiveRng(source.kind.c_str()) != 0;
  });
}

std::size_t NeedOf(const DrawRequest& request) {
  const std::size_t count = rng::ParseSources(request.from).size();
  const std::uint64_t need = request.need.value_or(count);
  if (need >= 1 && need <= count) return static_cast<std::size_t>(need);
  throw Refusal(kWrongUsage, "--need must be a number from 1 to " + std::to_string(count) +
                                 ", the number of generators in --from.");
}

void DrawFrom(const Sources& sources, std::size_t need, const DrawRequest& request,
              const TakePiece& pass) {
  RequirePresence(sources, need);
  CombinedDraw draw(sources, need);
  const FillPiece fill = [&draw](SecretBytes& piece, std::uint64_t) { draw.Fill(piece); };
  if (AsksUser(sources)) {
    DrawAtOnce(request.size, "One of the generators", fill, pass);
  } else {
    DrawInPieces(request.size, fill, pass);
  }
  if (request.isRecorded) draw.Record(request.size, pass);
  draw.ReportFailures();
}

}  // namespace

void DrawCombined(const DrawRequest& request, const TakePiece& pass) {
  const std::size_t need = NeedOf(request);
  WithGenerators(request.from,
                 [&](const Sources& sources) { DrawFrom(sources, need, request, pass); });
}
