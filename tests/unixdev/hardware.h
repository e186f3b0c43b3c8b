#ifndef TESTS_UNIXDEV_HARDWARE_H
#define TESTS_UNIXDEV_HARDWARE_H

#include "tests/unixdev/unixdev.h"

#include <algorithm>
#include <cerrno>
#include <string>

/// /dev/hwrng is a device that returns what the case says.
class Hardware : public UnixDev {
 protected:
  void SetUp() override {
    UnixDev::SetUp();
    device.path = "/dev/null";  // a character device that everybody may read
    device.read = FillWell;
  }

  bool IsSelected() const {
    char id[6] = "";
    const bool hasId = rng->GetHardwareId(nullptr) == 6 && rng->GetHardwareId(id) == 6;
    EXPECT_TRUE(!hasId || id == std::string("hwrng"));
    EXPECT_EQ(
        hasId ? kRngCapabilityHardware | kRngCapabilityMayBlock : kRngCapabilityOperatingSystem,
        rng->GetFlags());
    return hasId;
  }

  /// Whether a draw succeeds, and is from the device.
  bool DrawsFromHardware() {
    const int opened = device.opened;
    const bool isDrawn = rng->Generate(buffer, sizeof buffer);
    EXPECT_EQ(opened + 1, device.opened);
    return isDrawn;
  }

  /// The device gives zeros in one draw, and good bytes again.
  void RaiseAlarm() {
    device.read = [](unsigned char* bytes, std::size_t size) { return Fill(bytes, size, 0); };
    ExpectFailureLeavesZeroes();
    device.read = FillWell;
  }

  FakeFile& device = FileAt("/dev/hwrng");
  unsigned char buffer[32] = {};
};

inline ssize_t GiveNothing(unsigned char*, std::size_t) { return Fail(EAGAIN); }

#endif
