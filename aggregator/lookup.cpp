#include "aggregator/process_state.h"

#include <cstring>
#include <memory>

#include <rngaggregator/aggregator.h>

namespace {

// Whether `provider` now reports `name`. One that reports none answers to the empty name.
bool ReportsName(IRngProvider* provider, const char* name) {
  const std::int32_t size = provider ? provider->GetName(nullptr) : 0;
  if (size == 0) return !*name;
  // A negative size is refused by the allocation. One call zeroes the buffer, without make_unique's
  // test for an empty one.
  const std::size_t length = static_cast<std::size_t>(size);
  const auto buffer = std::make_unique_for_overwrite<char[]>(length);
  std::memset(buffer.get(), 0, length);
  if (provider->GetName(buffer.get()) != size) return !*name;
  // Without a terminator the text ends with the buffer, and a longer name is another one. Most names
  // differ in their first byte already: looking at it here spares a call for each of them.
  return *name == buffer[0] && std::strncmp(name, buffer.get(), length) == 0 &&
         std::strlen(name) <= length;
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
  if (!IsInitialized()) return nullptr;
  for (const RngInfoEx& info : g_state.providers) {
    if (ReportsName(info.provider, name)) return info.provider;
  }
  return nullptr;
}

std::int32_t IsInteractiveRng(const char* name) {
  for (const char* interactive : {rngBioWin, rngBioQt, rngBioX11, rngBioKb}) {
    if (std::strcmp(name, interactive) == 0) return 1;
  }
  return 0;
}
