#include "tools/rngctl/commands/default.h"

#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/kinds.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/settings/store_default.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <iostream>

#include <rngaggregator/aggregator.h>

namespace {

constexpr std::size_t kLongest = kRngNameSize - 1;

// Refuses what the library would store but could not return, and what would control the terminal when
// it is shown. Nothing has been written so far.
void CheckText(const std::string& what, const std::string& text) {
  const std::string named = what + " " + Quoted(text);
  if (text.size() > kLongest) {
    throw Refusal(kWrongUsage, named + " has " + std::to_string(text.size()) + " bytes; at most " +
                                   std::to_string(kLongest) +
                                   " can be stored. Nothing was changed.");
  }
  const bool hasBlankEnd = text.starts_with(' ') || text.ends_with(' ');
  if (hasBlankEnd || text.find('=') != std::string::npos || !IsPlain(text)) {
    throw Refusal(kWrongUsage, named +
                                   " cannot be stored: it must be one line of UTF-8 without "
                                   "\"=\", without control characters, and without leading or "
                                   "trailing blanks. Nothing was changed.");
  }
}

struct Answer {
  Default configured;
  DefaultRngInfo found;
  bool isFound;
};

Answer AskForDefault(std::uint32_t mask, const std::string& file) {
  const DirectoryLock lock = LockForReading(file);
  RequireReadable(
      file);  // again, because the lock and plug-ins may have taken the last descriptors
  Answer answer{ReadConfiguredDefault(), {}, false};
  answer.isFound = GetDefaultRng(&answer.found, mask) == 1;
  return answer;
}

void ShowDefault(std::uint32_t mask, const std::string& file, const TakePiece& pass) {
  const Answer answer = AskForDefault(mask, file);
  const Default& configured = answer.configured;
  const DefaultRngInfo& info = answer.found;
  PassText(pass, "configured  " + Printable(Describe(configured)) + '\n');
  if (!answer.isFound) {
    if (configured.kind.size() > kLongest || configured.device.size() > kLongest) {
      throw Refusal(kNegativeAnswer, "There is no default: the configured one is longer than " +
                                         std::to_string(kLongest) + " bytes.");
    }
    throw Refusal(kNegativeAnswer,
                  "There is no default: none is configured, and no kind in the mask is usable.");
  }
  PassText(pass, (configured.kind.empty() ? "fallback    " : "default     ") +
                     Printable(Describe({info.type, info.hardwareId})) + '\n');
  PassText(pass, std::string("loaded      ") + (GetRng(info.type) ? "yes" : "no") + '\n');
}

std::string WhyNotFound(const std::string& kind) {
  if (IsKind(kind)) {
    return "there is no usable generator " + Quoted(kind) + ". Run \"rngctl doctor " + kind +
           "\" to find out why.";
  }
  const std::string meant = FindMeantKind(kind);
  return "there is no kind " + Quoted(kind) +
         (meant.empty() ? "; \"rngctl list\" shows the usable generators."
                        : "; did you mean " + Quoted(meant) + "?");
}

// Why programs that use the default will not get it, "" if they will.
std::string WhyNotUsable(const Default& chosen) {
  IRngProvider* const rng = GetRng(chosen.kind.c_str());
  if (!rng) return WhyNotFound(chosen.kind);
  if (chosen.device.empty() || rng->SelectDevice(chosen.device.c_str())) return "";
  return "the generator " + Quoted(chosen.kind) + " refuses the device " + Quoted(chosen.device) +
         ". \"rngctl list\" shows the devices of generators that report them.";
}

// The default is stored, so nothing that the plug-ins do is a failure of the command.
void WarnUnlessUsable(const Default& chosen) {
  std::string why;
  const auto ask = [&chosen] {
    std::string answer;
    WithStartedAggregator([&] { answer = WhyNotUsable(chosen); });
    return answer;
  };
  try {
    why = AnswerOfFork(kPluginsAndService, ask);
  } catch (const Refusal& refusal) {
    why = std::string("it is unknown whether the default can be used. ") + refusal.what();
    if (!why.ends_with('.')) why += '.';  // after the words of a plug-in
  }
  if (why.empty()) return;
  std::cerr << "Warning: " << Printable(why) << " The default was stored anyway.\n";
}

}  // namespace

void RunDefault(std::uint32_t mask) {
  const std::string file = FindReadableSettings();  // before plug-ins read them
  ForkedProcess process(kPluginsAndService, [&](const TakePiece& pass) {
    WithStartedAggregator([&] { ShowDefault(mask, file, pass); });
  });
  const InterruptionWatch interruption;
  process.ForEachPiece([](const SecretBytes& piece) {
    std::cout.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  });
}

void RunDefaultSet(const std::string& name, const std::string& hardwareId) {
  CheckText("The name", name);
  CheckText("The hardware identifier", hardwareId);
  const Default chosen{name, hardwareId};
  StoreDefault(chosen);
  std::cout << (name.empty() ? "No default is configured.\n"
                             : "The default is now " + Printable(Describe(chosen)) + ".\n")
            << std::flush;  // the generators may take long to start
  if (!name.empty()) WarnUnlessUsable(chosen);
}
