#include "tools/rngctl/commands/default.h"

#include "tools/rngctl/refusal.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <cerrno>
#include <cstring>
#include <iostream>

#include <rngaggregator/aggregator.h>

namespace {

constexpr std::size_t kLongest = kRngNameSize - 1;

std::string Text(const char* text) { return text ? text : ""; }

std::string Describe(const std::string& type, const std::string& hardwareId) {
  return (type.empty() ? "none" : type) + (hardwareId.empty() ? "" : ", device " + hardwareId);
}

// Refuses, before anything is written, what the library would store but could not return.
void CheckStorable(const std::string& what, const std::string& text) {
  if (text.size() > kLongest) {
    throw Refusal(kWrongUsage, what + " " + Quoted(text) + " has " + std::to_string(text.size()) +
                                   " characters; at most " + std::to_string(kLongest) +
                                   " can be stored. Nothing was changed.");
  }
  const std::string blanks = " \t\n\v\f\r";
  const bool hasBlankEnd = !text.empty() && (blanks.find(text.front()) != std::string::npos ||
                                             blanks.find(text.back()) != std::string::npos);
  if (hasBlankEnd || text.find_first_of("=\n\r") != std::string::npos) {
    throw Refusal(kWrongUsage,
                  what + " " + Quoted(text) +
                      " cannot be stored: it must be one line without \"=\" and without "
                      "leading or trailing blanks. Nothing was changed.");
  }
}

void PrintDefault(std::uint32_t mask) {
  IRngSettings& settings = *GetDefaultSettings();
  const std::string type = Text(settings.GetType());
  const std::string hardwareId = Text(settings.GetHardwareId());
  std::cout << "configured  " << Printable(Describe(type, hardwareId)) << '\n';

  DefaultRngInfo info;
  if (!GetDefaultRng(&info, mask)) {
    if (type.size() > kLongest || hardwareId.size() > kLongest) {
      throw Refusal(kNegativeAnswer, "There is no default: the configured one is longer than " +
                                         std::to_string(kLongest) + " characters.");
    }
    throw Refusal(kNegativeAnswer,
                  "There is no default: none is configured, and no kind in the mask is usable.");
  }
  std::cout << (type.empty() ? "fallback    " : "default     ")
            << Printable(Describe(info.type, info.hardwareId)) << '\n'
            << "loaded      " << (GetRng(info.type) ? "yes" : "no") << '\n';
}

void StoreDefault(const std::string& name, const std::string& hardwareId) {
  errno = 0;
  if (!SetDefaultRng(name.c_str(), hardwareId.empty() ? nullptr : hardwareId.c_str())) {
    const std::string reason =
        errno ? std::strerror(errno) : "the settings directory is unknown or not an absolute path";
    throw Refusal(kNegativeAnswer, "The default could not be stored: " + reason + ".");
  }
  // The store does not notice every failure to write; reading back does.
  IRngSettings& settings = *GetDefaultSettings();
  const std::string stored = Describe(Text(settings.GetType()), Text(settings.GetHardwareId()));
  if (stored != Describe(name, hardwareId)) {
    throw Refusal(kNegativeAnswer, "The default was stored but reads back as " + Quoted(stored) +
                                       ": rng.ini could not be replaced, or another section or key "
                                       "in it comes first.");
  }
  std::cout << (name.empty() ? "No default is configured now.\n"
                             : "The default is now " + Printable(stored) + ".\n");
  if (!name.empty() && !GetRng(name.c_str())) {
    std::cerr << "Warning: there is no usable generator " << Quoted(Printable(name))
              << " now (case matters; see \"rngctl list\"). The default was stored anyway.\n";
  }
}

}  // namespace

void RunDefault(std::uint32_t mask) {
  WithStartedAggregator([mask] { PrintDefault(mask); });
}

void RunDefaultSet(const std::string& name, const std::string& hardwareId) {
  CheckStorable("The name", name);
  CheckStorable("The hardware identifier", hardwareId);
  WithStartedAggregator([&] { StoreDefault(name, hardwareId); });
}
