#ifndef PLUGINS_UNIXDEV_HARDWARE_DEVICE_H
#define PLUGINS_UNIXDEV_HARDWARE_DEVICE_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include <rngaggregator/checked_rng.h>

constexpr char kHardwareId[] = "hwrng";
constexpr char kHardwarePath[] = "/dev/hwrng";

/// The device through which the kernel gives the bytes of a hardware generator, such as a TPM or that of a virtual
/// machine. The administrator chooses which one.
///
/// Its drivers may give one byte at a time, nothing for a while, or nonsense. So draws are continued until they
/// are complete, and checked. After an alarm they fail until `Select` or `SelfTest` passes.
///
/// Threads: any. Nothing is kept open or locked between draws, so a forked copy of the process can draw, too.
class HardwareDevice {
 public:
  /// Returns true when the device gives bytes that look random. Returns false when it is missing, is not a
  /// character device, or cannot be read by this user, when it fails or gives nothing for two seconds, and when its
  /// bytes do not look random.
  bool Select() { return PassesTest(kSelectionSize, kSelectionPatience); }

  /// Fills `buffer` with `size` bytes. Returns false, with zeros in the buffer, after an alarm, when the device
  /// cannot be used, when it fails or gives nothing for ten seconds, and when the draw is cancelled.
  bool Draw(void* buffer, std::size_t size);

  /// Tests bytes that it draws now.
  bool SelfTest() { return PassesTest(kSelfTestSize, kPatience); }

  /// Ends what waits for the device now, and nothing that begins later.
  void Cancel() { ++cancels; }

 private:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t kSelectionSize = 32;  // shows whether 16 bytes repeat
  static constexpr std::size_t kSelfTestSize = 1024;
  static constexpr std::chrono::seconds kSelectionPatience{2};
  static constexpr std::chrono::seconds kPatience{10};

  bool PassesTest(std::size_t size, Clock::duration patience);
  bool Fill(unsigned char* bytes, std::size_t size, Clock::duration patience) const;

  std::atomic<std::uint64_t> cancels{0};  // number of calls of Cancel
  RngDrawCheck check;
};

#endif
