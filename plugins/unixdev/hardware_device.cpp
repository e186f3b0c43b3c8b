#include "plugins/unixdev/hardware_device.h"

#include "plugins/unixdev/open_file.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {

// A slow device needs long to fill a larger buffer, and Cancel would have to wait until the kernel returns.
constexpr std::size_t kPiece = 64;

// In microseconds. Cancel waits for as long, which nobody notices.
constexpr useconds_t kPause = 1'000;

}  // namespace

bool HardwareDevice::Draw(void* buffer, std::size_t size) {
  auto* const bytes = static_cast<unsigned char*>(buffer);
  return check.Run(buffer, size, [this, bytes, size] { return Fill(bytes, size, kTimeout); });
}

// Uses a separate check, because the one for draws may be in alarm.
bool HardwareDevice::PassesTest(std::size_t size, Clock::duration timeout) {
  unsigned char sample[kSelfTestSize];
  RngDrawCheck fresh;
  if (!fresh.Run(sample, size, [&] { return Fill(sample, size, timeout); })) return false;
  check.Reset();
  return true;
}

// The timeout applies to the next byte, not to the whole draw: a slow device may take as long as it needs.
bool HardwareDevice::Fill(unsigned char* bytes, std::size_t size, Clock::duration timeout) const {
  const std::uint64_t cancelsBefore = cancels;
  const OpenFile device(kHardwarePath);
  if (!device.IsCharacterDevice()) return false;
  Clock::time_point latest = Clock::now() + timeout;
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = device.Read(bytes + done, std::min(size - done, kPiece));
    const int error = count < 0 ? errno : 0;
    if (count > 0) {
      done += static_cast<std::size_t>(count);
      latest = Clock::now() + timeout;
    } else if ((error != EAGAIN && error != EINTR) || Clock::now() >= latest) {
      return false;
    }
    if (cancels != cancelsBefore) return false;
    if (error == EAGAIN) ::usleep(kPause);
  }
  return true;
}
