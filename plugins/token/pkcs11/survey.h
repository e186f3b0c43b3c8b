#ifndef RNG_TOKEN_SURVEY_H
#define RNG_TOKEN_SURVEY_H

#include "modules.h"

#include <string>
#include <vector>

/// The slot that a token is in.
struct Slot {
  Module* module = nullptr;
  CK_SLOT_ID id = 0;
};

/// A token as its module describes it. The texts are trimmed but may hold any bytes; see `Plain`.
struct Token {
  Slot slot;
  std::string serial;
  std::string label;
  std::string model;
  std::string difference;  ///< how it differs from the URI; "" if it matches
  bool isInitialized;
  bool hasGenerator;
  bool isDuplicate = false;  ///< another matching token has the same serial number

  /// Whether draws may use it.
  bool IsCandidate() const {
    return difference.empty() && isInitialized && hasGenerator && !isDuplicate;
  }
};

/// Reads about the token in a slot. Returns what the module returns.
CK_RV ReadToken(const Slot& slot, const TokenUri& uri, Token& token);

/// The tokens in the slots of all modules.
struct Survey {
  std::vector<Token> tokens;
  std::vector<std::string> problems;  ///< why slots could not be read, in sentences
  bool needsOpen = false;             ///< a module is not initialized
};
Survey SurveyTokens(const Modules& modules, const TokenUri& uri);

/// Whether it can be stored in rng.ini. `SelectDevice` accepts no others.
bool IsStorable(const std::string& serial);

/// For display: `Token "label" (serial number 0123)`.
std::string Describe(const Token& token);

#endif
