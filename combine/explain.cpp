#include <rngaggregator/checked_rng.h>
#include <rngaggregator/combined_rng.h>

std::string rng::Explain(const SourceOutcome& outcome) {
  const std::string name = "The generator \"" + outcome.kind + '"';
  switch (outcome.result) {
    case SourceResult::kMissing:
      return name + " is not usable now.";
    case SourceResult::kOtherName:
      return name + " reports another name, or none.";
    case SourceResult::kDeviceRefused:
      return name + " refuses the device \"" + outcome.device + "\".";
    case SourceResult::kFailed:
      return name + " failed, or the draw was cancelled.";
    case SourceResult::kAlarm:
      return name + " returned bytes that are not random (" +
             RngDrawCheck::Describe(outcome.alarm) + ").";
    case SourceResult::kThrew:
      return name + " threw an exception" +
             (outcome.message.empty() ? "." : " (" + outcome.message + ").");
    case SourceResult::kNotAsked:
      return name + " was not asked, because the draw had ended.";
    case SourceResult::kUsed:
      break;
  }
  return "";
}
