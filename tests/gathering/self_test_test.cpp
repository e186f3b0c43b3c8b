// The self-test with parts that do not work.

#include "helpers/gathering/self_test.h"

#include "helpers/gathering/key_credit.h"
#include "helpers/gathering/motion_credit.h"

#include <gtest/gtest.h>

namespace {

int g_keyCredit = 2;
std::int32_t g_bendStep = 0;
std::int32_t g_bend = 2;

}  // namespace

// The program has these in place of the real ones.
int KeyCredit::Take(const KeyPress&) { return g_keyCredit; }

std::optional<MotionCredit::Bend> MotionCredit::Take(const Motion&) {
  g_bend += g_bendStep;
  return Bend{g_bend, 0};
}

TEST(GatheringSelfTest, PassesWhereAllPartsWork) { EXPECT_TRUE(TestGathering()); }

TEST(GatheringSelfTest, FailsWhereKeysGetNoCredit) {
  g_keyCredit = 0;
  EXPECT_FALSE(TestGathering());
}

TEST(GatheringSelfTest, FailsWhereRepetitionIsNotNoticed) {
  g_bendStep = 1;
  EXPECT_FALSE(TestGathering());
}
