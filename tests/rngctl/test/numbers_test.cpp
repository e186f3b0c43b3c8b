#include "tools/rngctl/test/report/numbers.h"

#include <gtest/gtest.h>

TEST(Numbers, SpeedHasTheLargestFittingUnit) {
  EXPECT_EQ("0 bytes per second", BytesPerSecond(0));
  EXPECT_EQ("999 bytes per second", BytesPerSecond(999));
  EXPECT_EQ("1 kB per second", BytesPerSecond(1000));
  EXPECT_EQ("526 MB per second", BytesPerSecond(526'123'456));
  EXPECT_EQ("1.58 GB per second", BytesPerSecond(1'580'000'000));
}

TEST(Numbers, RoundingReachesTheNextUnit) {
  EXPECT_EQ("999 MB per second", BytesPerSecond(999'400'000));
  EXPECT_EQ("1 GB per second", BytesPerSecond(999'600'000));
  EXPECT_EQ("1 us", WithUnit(999.6e-9));
}

TEST(Numbers, TimesHaveTheLargestFittingUnit) {
  EXPECT_EQ("0 ns", WithUnit(0));
  EXPECT_EQ("263 ns", WithUnit(263e-9));
  EXPECT_EQ("1.61 us", WithUnit(1.61e-6));
  EXPECT_EQ("12.5 ms", WithUnit(12.5e-3));
  EXPECT_EQ("600 s", WithUnit(600));
}
