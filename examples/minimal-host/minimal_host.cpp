// Draws 32 random bytes and prints them in hexadecimal. They come from the default generator or, if
// none is configured, from the first usable one.

#include <cstdio>
#include <exception>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

IRngProvider* FindFirst() {
  constexpr std::uint32_t kAnyCapability = 0xFFFFFFFF;
  const std::int32_t count = GetAvailableRng(nullptr, kAnyCapability);
  std::vector<IRngProvider*> all(static_cast<std::size_t>(count));
  GetAvailableRng(all.data(), kAnyCapability);
  if (!all.empty()) return all.front();
  std::fputs("No generator is usable.\n", stderr);
  return nullptr;
}

// A configured default is the user's choice: no other generator replaces it when it is not usable.
IRngProvider* FindRng() {
  DefaultRngInfo choice;
  if (!GetDefaultRng(&choice, 0)) return FindFirst();
  IRngProvider* const rng = GetRng(choice.type);
  if (rng && rng->SelectDevice(choice.hardwareId)) return rng;
  std::fprintf(stderr, "The default generator \"%s\" is not usable now.\n", choice.type);
  return nullptr;
}

int PrintRandomBytes() {
  IRngProvider* const rng = FindRng();
  if (!rng) return 1;
  unsigned char bytes[32];
  if (!rng->Generate(bytes, sizeof bytes)) {
    std::fputs("The generator failed.\n", stderr);
    return 1;
  }
  for (const unsigned char byte : bytes) std::printf("%02x", byte);
  std::puts("");
  return 0;
}

// The library catches nothing: exceptions of plug-ins reach the host.
template <typename Work>
int Guarded(Work work) {
  try {
    return work();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "A plug-in failed: %s\n", failure.what());
  } catch (...) {
    std::fputs("A plug-in failed.\n", stderr);
  }
  return 1;
}

int StartAndPrint() {
  Initialize(GetDefaultSettings());
  return PrintRandomBytes();
}

int Stop() {
  ShutDown();
  return 0;
}

}  // namespace

int main() {
  const int status = Guarded(StartAndPrint);
  // A start in which a plug-in threw must be stopped, too. One that could not take the lock has not begun.
  const int stopStatus = IsInitialized() ? Guarded(Stop) : 0;
  return status != 0 ? status : stopStatus;
}
