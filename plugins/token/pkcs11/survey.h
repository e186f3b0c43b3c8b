#ifndef RNG_TOKEN_SURVEY_H
#define RNG_TOKEN_SURVEY_H

#include "modules.h"

#include <string>
#include <vector>

/// Where a token is.
struct Place {
  Module* module = nullptr;
  CK_SLOT_ID slot = 0;
};

/// A token as its module describes it. The texts are trimmed, and not yet fit for people.
struct Token {
  Place place;
  std::string serial;
  std::string label;
  std::string model;
  std::string difference;  ///< in what it does not match the URI; "" if it matches
  bool isInitialized;
  bool hasGenerator;
  bool isTwin = false;  ///< another token that matches has the same serial number

  /// Whether a draw may try it.
  bool IsCandidate() const {
    return difference.empty() && isInitialized && hasGenerator && !isTwin;
  }
};

/// Looks at the token in a slot. Returns what the module returns.
CK_RV LookAt(const Place& place, const TokenUri& uri, Token& token);

/// What all modules have in their slots.
struct Survey {
  std::vector<Token> tokens;
  std::vector<std::string> problems;  ///< why slots could not be looked at, in sentences
  bool needsOpen = false;             ///< a module is not initialized
};
Survey LookAround(const Modules& modules, const TokenUri& uri);

/// Whether rng.ini can hold it, so that `SelectDevice` takes it.
bool IsStorable(const std::string& serial);

/// For people: `Token "label" (serial number 0123)`.
std::string Describe(const Token& token);

#endif
