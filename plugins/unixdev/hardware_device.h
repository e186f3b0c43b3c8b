#ifndef PLUGINS_UNIXDEV_HARDWARE_DEVICE_H
#define PLUGINS_UNIXDEV_HARDWARE_DEVICE_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include <rngaggregator/checked_rng.h>

constexpr char kHardwareId[] = "hwrng";
constexpr char kHardwarePath[] = "/dev/hwrng";

/// The device through which the kernel provides the bytes of a hardware generator, such as that of a TPM or a virtual
/// machine. The administrator chooses which one.
///
/// Drivers may return one byte at a time, nothing for a while, or bytes that are not random. So reads are repeated
/// until the draw is complete, and the bytes are checked. After an alarm, draws fail until `Select` or `SelfTest`
/// passes.
///
/// Threads: any. Nothing is kept open or locked between draws, so a forked copy of the process can draw, too.
class HardwareDevice {
 public:
  /// Returns true if the device returns bytes that look random. Returns false if it is missing, is not a character
  /// device, cannot be read by this user, fails, returns nothing for two seconds, or returns other bytes.
  bool Select() { return PassesTest(kSelectionSize, kSelectionTimeout); }

  /// Fills `buffer` with `size` bytes. Returns false, with zeros in the buffer, after an alarm, if the device cannot be
  /// opened, fails or returns nothing for ten seconds, or if the draw is cancelled.
  bool Draw(void* buffer, std::size_t size);

  /// Draws and tests fresh bytes.
  bool SelfTest() { return PassesTest(kSelfTestSize, kTimeout); }

  /// Ends the draws and tests that are running now. Later ones are not affected.
  void Cancel() { ++cancels; }

 private:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t kSelectionSize = 32;  // shows whether 16 bytes repeat
  static constexpr std::size_t kSelfTestSize = 1024;
  static constexpr std::chrono::seconds kSelectionTimeout{2};
  static constexpr std::chrono::seconds kTimeout{10};

  bool PassesTest(std::size_t size, Clock::duration timeout);
  bool Fill(unsigned char* bytes, std::size_t size, Clock::duration timeout) const;

  std::atomic<std::uint64_t> cancels{0};  // how many times Cancel was called
  RngDrawCheck check;
};

#endif
