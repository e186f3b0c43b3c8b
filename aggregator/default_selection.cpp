#include "aggregator/process_state.h"

#include <cstring>

#include <rngaggregator/aggregator.h>

namespace {

using NameField = char[kRngNameSize];

bool IsSet(const char* text) { return text && *text; }

// Whether `text`, which may be null, fits into a field of the record with its terminator.
bool Fits(const char* text) { return !text || ::strnlen(text, kRngNameSize) < kRngNameSize; }

// Copies no more than fits, even if the text changed since it was measured. The rest of `field` is
// already zero.
void Copy(NameField& field, const char* text) {
  std::memcpy(field, text, ::strnlen(text, kRngNameSize - 1));
}

// In order of preference, not of bit value.
const char* FindFallback(std::uint32_t mask) {
  if ((mask & kDefaultFallbackBio) && GetRng(rngBioWin)) return rngBioWin;
  if ((mask & kDefaultFallbackBioQt) && GetRng(rngBioQt)) return rngBioQt;
  if ((mask & kDefaultFallbackBioX11) && GetRng(rngBioX11)) return rngBioX11;
  if (mask & kDefaultFallbackBioKb)
    return "biokbd";  // the last resort: a fixed text, loaded or not
  return nullptr;
}

std::int32_t ReportFallback(DefaultRngInfo& info, std::uint32_t mask) {
  const char* const kind = FindFallback(mask);
  if (!kind || !Fits(kind)) return 0;  // a host may have set a name variable to a longer text
  Copy(info.type, kind);
  return 1;
}

}  // namespace

std::int32_t GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask) {
  if (!IsInitialized() || !info) return 0;
  *info = {};
  if (!g_currentSettings) return ReportFallback(*info, mask);
  const char* const type = g_currentSettings->GetType();
  const char* const hardwareId = g_currentSettings->GetHardwareId();
  if (!Fits(type) || !Fits(hardwareId)) return 0;  // an over-long identifier alone is enough
  if (!IsSet(type)) return ReportFallback(*info, mask);
  Copy(info->type, type);
  if (IsSet(hardwareId)) Copy(info->hardwareId, hardwareId);
  return 1;
}

bool SetDefaultRng(const char* type, const char* hardwareId) {
  if (!type || !g_currentSettings) return false;
  if (!Fits(type) || !Fits(hardwareId)) return false;
  if (!g_currentSettings->SetType(type)) return false;
  return g_currentSettings->SetHardwareId(hardwareId);
}

IRngSettings* GetDefaultSettings() { return &g_state.defaultSettings; }
