#include "quality/distributions.h"

#include <gtest/gtest.h>

TEST(Distributions, BinomialTailsAreExact) {
  EXPECT_EQ(1, GetBinomialTail(3, 0.1, 0));
  EXPECT_NEAR(0.271, GetBinomialTail(3, 0.1, 1), 1e-15);
  EXPECT_NEAR(0.028, GetBinomialTail(3, 0.1, 2), 1e-15);
  EXPECT_NEAR(0.001, GetBinomialTail(3, 0.1, 3), 1e-15);
  EXPECT_EQ(0, GetBinomialTail(3, 0.1, 4));
  EXPECT_EQ(0, GetBinomialTail(3, 0.1, 5));
}

TEST(Distributions, CoinTailsHaveTwoSides) {
  EXPECT_DOUBLE_EQ(1, GetCoinTails(10, 5));
  EXPECT_DOUBLE_EQ(2.0 / 1024, GetCoinTails(10, 0));
  EXPECT_DOUBLE_EQ(2.0 / 1024, GetCoinTails(10, 10));
  EXPECT_DOUBLE_EQ(22.0 / 1024, GetCoinTails(10, 9));
}

TEST(Distributions, ChiSquareTailsHaveTwoSides) {
  EXPECT_NEAR(0.1, GetChiSquareTails(293.2478, 255), 1e-5);  // 5 % are above
  EXPECT_NEAR(0.1, GetChiSquareTails(219.0254, 255), 1e-5);  // 5 % are below
  EXPECT_LT(GetChiSquareTails(0, 255), 1e-300);
}

TEST(Distributions, NormalTailsHaveTwoSides) {
  EXPECT_NEAR(0.05, GetNormalTails(1.959964), 1e-7);
  EXPECT_NEAR(0.05, GetNormalTails(-1.959964), 1e-7);
  EXPECT_EQ(1, GetNormalTails(0));
}
