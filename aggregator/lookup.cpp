#include "aggregator/process_state.h"

#include <cstring>
#include <memory>
#include <string_view>

#include <rngaggregator/aggregator.h>

namespace {

// Whether `provider` currently reports `name`. A provider without a name matches the empty name.
bool ReportsName(IRngProvider* provider, std::string_view name) {
  const std::int32_t size = provider ? provider->GetName(nullptr) : 0;
  if (size == 0) return name.empty();
  const auto length = static_cast<std::size_t>(size);    // negative: huge, cannot be allocated
  const auto buffer = std::make_unique<char[]>(length);  // all zero
  if (provider->GetName(buffer.get()) != size) return name.empty();
  return std::string_view(buffer.get(), ::strnlen(buffer.get(), length)) == name;
}

}  // namespace

std::int32_t GetAvailableRng(IRngProvider** providers, std::uint32_t mask) {
  std::int32_t count = 0;
  for (const RngInfoEx& info : g_state.providers) {
    if (!info.provider || (info.provider->GetFlags() & mask) == 0) continue;
    if (providers) providers[count] = info.provider;
    ++count;
  }
  return count;
}

IRngProvider* GetRng(const char* name) {
  if (!IsInitialized() || g_state.providers.empty()) return nullptr;
  const std::string_view wanted = name;
  for (const RngInfoEx& info : g_state.providers) {
    if (ReportsName(info.provider, wanted)) return info.provider;
  }
  return nullptr;
}

std::int32_t IsInteractiveRng(const char* name) {
  for (const char* interactive : {rngBioWin, rngBioQt, rngBioX11, rngBioKb}) {
    if (std::strcmp(name, interactive) == 0) return 1;
  }
  return 0;
}
