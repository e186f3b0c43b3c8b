#include "survey.h"

#include "text.h"

#include <algorithm>

namespace {

// Far more than any machine has. A module that reports more is broken.
constexpr CK_ULONG kMostSlots = 4096;

// The slots that hold a token. A token may be inserted between the two calls, so they are repeated.
CK_RV ListSlots(const Module& module, std::vector<CK_SLOT_ID>& slots) {
  if (!module.IsOpen()) return CKR_CRYPTOKI_NOT_INITIALIZED;
  CK_RV result = CKR_BUFFER_TOO_SMALL;
  for (int attempt = 0; attempt < 5 && result == CKR_BUFFER_TOO_SMALL; ++attempt) {
    CK_ULONG count = 0;
    result = module.Functions().C_GetSlotList(CK_TRUE, nullptr, &count);
    if (result != CKR_OK) break;
    slots.resize(std::min(count, kMostSlots));
    count = slots.size();
    if (!slots.empty()) result = module.Functions().C_GetSlotList(CK_TRUE, slots.data(), &count);
    if (result == CKR_OK) slots.resize(std::min<CK_ULONG>(count, slots.size()));
  }
  if (result != CKR_OK) slots.clear();
  return result;
}

void SurveyModule(Module& module, const TokenUri& uri, Survey& survey) {
  std::vector<CK_SLOT_ID> slots;
  const CK_RV listed = ListSlots(module, slots);
  survey.needsOpen = survey.needsOpen || listed == CKR_CRYPTOKI_NOT_INITIALIZED;
  if (listed != CKR_OK) {
    survey.problems.push_back("The module " + module.File() + " cannot list its slots: " +
                              Explain(listed) + ". See its vendor's manual.");
  }
  for (const CK_SLOT_ID slot : slots) {
    Token token;
    const CK_RV result = ReadToken({&module, slot}, uri, token);
    survey.needsOpen = survey.needsOpen || result == CKR_CRYPTOKI_NOT_INITIALIZED;
    if (result == CKR_OK) {
      survey.tokens.push_back(token);
    } else if (result != CKR_TOKEN_NOT_PRESENT && result != CKR_SLOT_ID_INVALID) {
      survey.problems.push_back("The token in slot " + std::to_string(slot) + " of " +
                                module.File() + " cannot be read: " + Explain(result) +
                                ". Remove it and insert it again.");
    }
  }
}

// Tokens that have not been initialized may all report the same serial number. They are not used, so they do not count.
void FindDuplicates(std::vector<Token>& tokens) {
  const auto counts = [](const Token& token) {
    return token.isInitialized && token.difference.empty() && !token.serial.empty();
  };
  for (Token& token : tokens) {
    token.isDuplicate = std::any_of(tokens.begin(), tokens.end(), [&](const Token& other) {
      return &other != &token && other.serial == token.serial && counts(other) && counts(token);
    });
  }
}

}  // namespace

CK_RV ReadToken(const Slot& slot, const TokenUri& uri, Token& token) {
  if (!slot.module->IsOpen()) return CKR_CRYPTOKI_NOT_INITIALIZED;
  CK_TOKEN_INFO info = {};
  const CK_RV result = slot.module->Functions().C_GetTokenInfo(slot.id, &info);
  if (result != CKR_OK) return result;
  token.slot = slot;
  token.serial = Trimmed(info.serialNumber);
  token.label = Trimmed(info.label);
  token.model = Trimmed(info.model);
  token.difference = uri.Difference(info);
  token.isInitialized = (info.flags & CKF_TOKEN_INITIALIZED) != 0;
  token.hasGenerator = (info.flags & CKF_RNG) != 0;
  return CKR_OK;
}

Survey SurveyTokens(const Modules& modules, const TokenUri& uri) {
  Survey survey;
  for (const auto& module : modules.All()) SurveyModule(*module, uri, survey);
  FindDuplicates(survey.tokens);
  return survey;
}

bool IsStorable(const std::string& serial) {
  return !serial.empty() && Plain(serial) == serial && serial.find('=') == std::string::npos;
}

std::string Describe(const Token& token) {
  return "Token \"" + Plain(token.label) + "\" (serial number " +
         (token.serial.empty() ? "missing" : Plain(token.serial)) + ")";
}
