// The kernel's random-number generator as the kind "unixdev". Plug-in authors may copy this file.

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

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

// Used on kernels without the getrandom system call.
class RandomDevice {
 public:
  RandomDevice() : descriptor(::open("/dev/urandom", O_RDONLY | O_CLOEXEC)) {}
  RandomDevice(const RandomDevice&) = delete;
  RandomDevice& operator=(const RandomDevice&) = delete;
  ~RandomDevice() {
    if (descriptor >= 0) ::close(descriptor);
  }
  ssize_t Read(void* buffer, std::size_t size) const { return ::read(descriptor, buffer, size); }

 private:
  int descriptor;
};

// Blocks only right after the system starts, until the kernel's pool is ready.
ssize_t ReadKernel(void* buffer, std::size_t size) {
  const ssize_t count = ::getrandom(buffer, size, 0);
  if (count >= 0 || errno != ENOSYS) return count;
  return RandomDevice().Read(buffer, size);
}

class UnixDevRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(kName, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report(kDescription, buffer); }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char* hardwareId) override { return !hardwareId || !*hardwareId; }

  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ReadKernel(bytes + done, size - done);
      if (count > 0) {
        done += static_cast<std::size_t>(count);  // a large draw arrives in pieces
      } else if (count == 0 || errno != EINTR) {
        std::memset(buffer, 0, size);
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
  std::uint32_t GetFlags() override { return kRngCapabilityOperatingSystem; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}  // a static object, destroyed when the library is closed
};

UnixDevRng g_provider;

}  // namespace

extern "C" IRngProvider* GetUnixDevRng() { return &g_provider; }
