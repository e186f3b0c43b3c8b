// The kernel's random-number generator as the kind "unixdev", and its hardware generator as that kind's device
// "hwrng". Plug-in authors may copy these files.

#include "plugins/unixdev/hardware_device.h"
#include "plugins/unixdev/report.h"
#include "plugins/unixdev/system_source.h"

#include <atomic>
#include <cstring>

#include <rngaggregator/provider.h>

// The anonymous namespace prevents clashes with classes of other plug-ins in the process.
namespace {

constexpr char kName[] = "unixdev";
constexpr char kDescription[] = "The operating system's random-number generator";

template <std::size_t Size>
std::int32_t Report(const char (&text)[Size], char* buffer) {
  if (buffer) std::memcpy(buffer, text, Size);
  return static_cast<std::int32_t>(Size);
}

class UnixDevRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(kName, buffer); }
  // The same whatever is selected: another thread may select between a caller's two calls.
  std::int32_t GetDescription(char* buffer) override { return Report(kDescription, buffer); }
  std::int32_t GetHardwareId(char* buffer) override {
    return isHardware ? Report(kHardwareId, buffer) : 0;
  }

  bool SelectDevice(const char* hardwareId) override {
    const bool isAny = !hardwareId || !*hardwareId;
    if (!isAny && (std::strcmp(hardwareId, kHardwareId) != 0 || !hardware.Select())) return false;
    isHardware = !isAny;
    return true;
  }

  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    return isHardware ? hardware.Draw(buffer, size) : DrawFromSystem(buffer, size);
  }

  bool IsAvailable() override { return SelfTest(); }
  bool SelfTest() override { return isHardware ? hardware.SelfTest() : DrawsDiffer(); }

  void Cancel() override { hardware.Cancel(); }  // the system's own generator never waits for long

  std::uint32_t GetFlags() override {
    return isHardware ? kRngCapabilityHardware | kRngCapabilityMayBlock
                      : kRngCapabilityOperatingSystem;
  }

  // Nothing is selected after a new start, even if something kept this library loaded.
  void SetSettings(IRngSettings* settings) override {
    isHardware = false;
    SetSettingsOfReport(settings);
  }

  void Release() override {}  // a static object, destroyed when the library is closed

 private:
  // Two equal draws are not a coincidence: the source is broken.
  static bool DrawsDiffer() {
    unsigned char first[32];
    unsigned char second[32];
    return DrawFromSystem(first, sizeof first) && DrawFromSystem(second, sizeof second) &&
           std::memcmp(first, second, sizeof first) != 0;
  }

  HardwareDevice hardware;
  std::atomic<bool> isHardware{false};  // what is selected
};

UnixDevRng g_provider;

}  // namespace

extern "C" IRngProvider* GetUnixDevRng() { return &g_provider; }
