#include "tools/rngctl/refusal.h"

#include <gtest/gtest.h>

TEST(HowToOpenMore, DependsOnWhetherTheProcessOrTheSystemHasTooMany) {
  EXPECT_STREQ("Allow more with ulimit -n; 16 are enough.", HowToOpenMore(EMFILE));
  EXPECT_STREQ("Close some programs, and try again.", HowToOpenMore(ENFILE));
  EXPECT_STREQ("", HowToOpenMore(EACCES));
}
