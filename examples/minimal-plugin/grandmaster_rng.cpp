// A plug-in of the kind "grandmaster", as small as the contract allows. Its bytes come from the
// kernel; a real plug-in uses its device in Generate, IsAvailable and SelfTest.

#include <cerrno>
#include <cstring>
#include <sys/random.h>

#include <rngaggregator/provider.h>

// The anonymous namespace prevents clashes with classes of other plug-ins in the process.
namespace {

// With a null buffer the caller only wants the size.
template <std::size_t Size>
std::int32_t Report(const char (&text)[Size], char* buffer) {
  if (buffer) std::memcpy(buffer, text, Size);
  return static_cast<std::int32_t>(Size);
}

class GrandmasterRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report("grandmaster", buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report("A first plug-in", buffer); }
  std::int32_t GetHardwareId(char*) override { return 0; }  // has no devices
  bool SelectDevice(const char* hardwareId) override { return !hardwareId || !*hardwareId; }

  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::getrandom(bytes + done, size - done, 0);
      if (count > 0) {
        done += static_cast<std::size_t>(count);  // a large draw arrives in pieces
      } else if (count == 0 || errno != EINTR) {
        std::memset(buffer, 0, size);  // nobody may mistake the rest for random
        return false;
      }
    }
    return true;
  }

  bool IsAvailable() override { return SelfTest(); }

  // Two equal draws are not a coincidence: the source is broken.
  bool SelfTest() override {
    unsigned char first[32];
    unsigned char second[32];
    return Generate(first, sizeof first) && Generate(second, sizeof second) &&
           std::memcmp(first, second, sizeof first) != 0;
  }

  void Cancel() override {}  // a draw never waits for a user or a device
  // A hardware device would report kRngCapabilityHardware.
  std::uint32_t GetFlags() override { return kRngCapabilityOperatingSystem; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}  // a static object, destroyed when the library is closed
};

GrandmasterRng g_provider;

}  // namespace

extern "C" IRngProvider* GetGrandmasterRng() { return &g_provider; }
