// What follows after the device has given bytes that are not random.

#include "tests/unixdev/hardware.h"

class HardwareAlarm : public Hardware {
 protected:
  void SetUp() override {
    Hardware::SetUp();
    ASSERT_TRUE(rng->SelectDevice("hwrng"));
    RaiseAlarm();
  }

  void ExpectAlarm() {
    const int opened = device.opened;
    ExpectFailureLeavesZeroes();
    EXPECT_EQ(opened, device.opened);  // nothing is drawn any more
    EXPECT_TRUE(IsSelected());
  }
};

TEST_F(HardwareAlarm, LastsEvenIfTheBytesAreGoodAgain) {
  for (int i = 0; i < 3; ++i) ExpectAlarm();
}

TEST_F(HardwareAlarm, EndsWithASelfTestThatPasses) {
  EXPECT_TRUE(rng->SelfTest());
  EXPECT_TRUE(DrawsFromHardware());
}

TEST_F(HardwareAlarm, EndsWithANewSelection) {
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_TRUE(DrawsFromHardware());
}

TEST_F(HardwareAlarm, DoesNotEndWithATestThatFails) {
  for (const Source& source :
       {Source([](unsigned char*bytes, std::size_t size) { return Fill(bytes, size, 0); }),
        Source([](unsigned char*, std::size_t) { return Fail(EIO); })}) {
    device.read = source;
    EXPECT_FALSE(rng->SelfTest());
    EXPECT_FALSE(rng->IsAvailable());
    EXPECT_FALSE(rng->SelectDevice("hwrng"));
    device.read = FillWell;
    ExpectAlarm();
  }
}

TEST_F(HardwareAlarm, DoesNotAffectTheSystemsGenerator) {
  EXPECT_TRUE(rng->SelectDevice(""));
  EXPECT_NE(Draw(32), Draw(32));
  EXPECT_TRUE(rng->SelfTest());  // tests what is selected
  EXPECT_TRUE(rng->SelectDevice("hwrng"));
}

// The first bytes of a draw may continue what the draw before it ended with.
TEST_F(HardwareAlarm, ComesFromTheBytesOfAllDrawsAsOneStream) {
  ASSERT_TRUE(rng->SelfTest());
  device.read = [](unsigned char* bytes, std::size_t size) { return Fill(bytes, size, 7); };
  for (int i = 0; i < 8; ++i) Draw(1);
  ExpectFailureLeavesZeroes(1);
}

// A self-test that passes forgets the stream, even if there was no alarm.
TEST_F(HardwareAlarm, DoesNotComeFromBytesOnBothSidesOfASelfTest) {
  const Source sevens = [](unsigned char* bytes, std::size_t size) { return Fill(bytes, size, 7); };
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(rng->SelfTest());
    device.read = sevens;
    for (int i = 0; i < 8; ++i) Draw(1);
    device.read = FillWell;
  }
}

TEST_F(HardwareAlarm, SelfTestNeedsAThousandBytesOfTheDevice) {
  const int opened = device.opened;
  std::size_t given = 0;
  device.read = [&given](unsigned char* bytes, std::size_t size) {
    given += size;
    return FillWell(bytes, size);
  };
  EXPECT_TRUE(rng->SelfTest());
  EXPECT_EQ(opened + 1, device.opened);
  EXPECT_EQ(1024U, given);
}

TEST_F(HardwareAlarm, SelfTestAcceptsADeviceThatIsSilentForLessThanTenSeconds) {
  FakeTime();
  device.read = [](unsigned char* bytes, std::size_t size) {
    return FakeTimePassed() < std::chrono::milliseconds(9900) ? Fail(EAGAIN)
                                                              : FillWell(bytes, size);
  };
  EXPECT_TRUE(rng->SelfTest());
}

TEST_F(HardwareAlarm, SelfTestGivesUpAfterTenSecondsWithoutAByte) {
  FakeTime();
  device.read = GiveNothing;
  EXPECT_FALSE(rng->SelfTest());
  EXPECT_EQ(std::chrono::seconds(10), FakeTimePassed());
}
