#include "tools/rngctl/process/forked/secret_bytes.h"

#include <gtest/gtest.h>

namespace {

bool LeavesCore() { return ::prctl(PR_GET_DUMPABLE) == 1; }

}  // namespace

TEST(NoCore, LastsAsLongAsTheOutermost) {
  ASSERT_TRUE(LeavesCore());
  {
    const NoCore outer;
    EXPECT_FALSE(LeavesCore());
    {
      const NoCore inner;
      EXPECT_FALSE(LeavesCore());
    }
    EXPECT_FALSE(LeavesCore());
  }
  EXPECT_TRUE(LeavesCore());
}
