#include "tests/unixdev/hardware.h"

#include <fcntl.h>
#include <sys/stat.h>

using std::chrono::milliseconds;
using std::chrono::seconds;

class HardwareSelection : public Hardware {
 protected:
  void ExpectRefusal() {
    EXPECT_FALSE(rng->SelectDevice("hwrng"));
    EXPECT_FALSE(IsSelected());
    const int opened = device.opened;
    EXPECT_NE(Draw(32), Draw(32));  // the system's generator
    EXPECT_EQ(opened, device.opened);
  }
};

TEST_F(HardwareSelection, IsNotMadeByTheStart) {
  EXPECT_FALSE(IsSelected());
  EXPECT_TRUE(rng->IsAvailable());
  Draw(32);
  EXPECT_EQ(0, device.opened);
}

TEST_F(HardwareSelection, ShowsInFlagsAndIdentifier) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_TRUE(IsSelected());
  EXPECT_EQ(1, library.GetAvailableRng(nullptr, kRngCapabilityHardware));
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, kRngCapabilityOperatingSystem));
  EXPECT_TRUE(DrawsFromHardware());
}

// Draws of other threads come from the system's generator until then.
TEST_F(HardwareSelection, BeginsWhenTheDeviceHasPassedItsTest) {
  device.read = [this](unsigned char* bytes, std::size_t size) {
    EXPECT_FALSE(IsSelected());
    return FillWell(bytes, size);
  };
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_TRUE(IsSelected());
}

TEST_F(HardwareSelection, EndsWithNullOrAnEmptyIdentifier) {
  for (const char* any : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_TRUE(rng->SelectDevice("hwrng"));
    const int opened = device.opened;
    EXPECT_TRUE(rng->SelectDevice(any));
    EXPECT_FALSE(IsSelected());
    Draw(32);
    EXPECT_EQ(opened, device.opened);
  }
}

TEST_F(HardwareSelection, EndsWithTheStop) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  ASSERT_EQ(1, Restart());
  rng = library.GetRng("unixdev");
  EXPECT_FALSE(IsSelected());
}

// As after a stop, if something else keeps the library of the plug-in loaded.
TEST_F(HardwareSelection, EndsWithNewSettings) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  rng->SetSettings(nullptr);
  EXPECT_FALSE(IsSelected());
}

TEST_F(HardwareSelection, LeavesTheDescriptionAsItIs) {
  const std::int32_t size = rng->GetDescription(nullptr);
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_EQ(size, rng->GetDescription(nullptr));
}

TEST_F(HardwareSelection, OtherIdentifiersAreRefused) {
  for (const bool isSelected : {false, true}) {
    EXPECT_TRUE(rng->SelectDevice(isSelected ? "hwrng" : ""));
    for (const char* other : {"hwrng0", "hwrn", "HWRNG", "/dev/hwrng", " hwrng"}) {
      EXPECT_FALSE(rng->SelectDevice(other)) << other;
      EXPECT_EQ(isSelected, IsSelected());
    }
  }
}

TEST_F(HardwareSelection, AMissingOrUnreadableDeviceIsRefused) {
  for (const int error : {ENOENT, EACCES, EPERM, ENODEV, EMFILE}) {
    device.error = error;
    ExpectRefusal();
  }
}

TEST_F(HardwareSelection, WhatIsNotACharacterDeviceIsRefused) {
  WriteFile(TreePath("file"), "good bytes for a whole selection, and more");
  ASSERT_EQ(0, ::mkfifo(TreePath("pipe").c_str(), 0600));  // opening one waits for a writer
  for (const char* name : {"file", "pipe", ""}) {
    device.path = TreePath(name);
    ExpectRefusal();
  }
  EXPECT_EQ(3, device.opened);
}

TEST_F(HardwareSelection, AFileThatCannotBeExaminedIsRefused) {
  g_statError = EIO;
  ExpectRefusal();
}

TEST_F(HardwareSelection, ADeviceThatFailsOrEndsIsRefused) {
  for (const int error : {EIO, ENODEV, EPIPE, EINVAL}) {
    device.read = [error](unsigned char*, std::size_t) { return Fail(error); };
    ExpectRefusal();
  }
  device.read = [](unsigned char*, std::size_t) { return ssize_t{0}; };
  ExpectRefusal();
}

TEST_F(HardwareSelection, BytesThatAreNotRandomAreRefused) {
  device.read = nullptr;
  device.path = "/dev/zero";
  ExpectRefusal();
  device.read = [](unsigned char* bytes, std::size_t size) {  // 16 bytes that repeat
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i % 16);
    return static_cast<ssize_t>(size);
  };
  ExpectRefusal();
}

TEST_F(HardwareSelection, ADeviceThatGivesNothingForTwoSecondsIsRefused) {
  FakeTime();
  device.read = GiveNothing;
  ExpectRefusal();
  EXPECT_GE(FakeTimePassed(), seconds(2));
  EXPECT_LT(FakeTimePassed(), milliseconds(2100));
}

TEST_F(HardwareSelection, ADeviceThatIsOnlyInterruptedForTwoSecondsIsRefused) {
  FakeTime();
  device.read = [](unsigned char*, std::size_t) {
    ::usleep(1000);
    return Fail(EINTR);
  };
  ExpectRefusal();
}

TEST_F(HardwareSelection, ADeviceThatGivesAByteInLessThanTwoSecondsIsAccepted) {
  FakeTime();
  std::int64_t given = 0;
  device.read = [&given](unsigned char* bytes, std::size_t) {
    if (FakeTimePassed() < (given + 1) * milliseconds(1900)) return Fail(EAGAIN);
    ++given;
    return FillWell(bytes, 1);
  };
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_EQ(32, given);
}

TEST_F(HardwareSelection, ARefusalKeepsTheEarlierSelection) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  device.error = ENOENT;
  EXPECT_FALSE(rng->SelectDevice("hwrng"));
  EXPECT_TRUE(IsSelected());
  ExpectFailureLeavesZeroes();
  device.error = 0;
  EXPECT_TRUE(DrawsFromHardware());
}

TEST_F(HardwareSelection, OpensTheDeviceWithoutWaitingAndForThisProgramAlone) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_EQ(O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, device.flags);
}
