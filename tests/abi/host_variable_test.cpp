// A host that has a name variable of its own and exports it: the loader makes the host's the one
// object of that name, and the library must use it, too.

#include "tests/support/aggregator_library.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>

const char* rngBioQt = "mine";

TEST(HostWithItsOwnNameVariable, IsFollowedByIsInteractiveRng) {
  const AggregatorLibrary library;
  EXPECT_EQ(1, library.IsInteractiveRng("mine"));
  EXPECT_EQ(0, library.IsInteractiveRng("bioqt"));
  rngBioQt = "later";
  EXPECT_EQ(1, library.IsInteractiveRng("later"));
  EXPECT_EQ(0, library.IsInteractiveRng("mine"));
}

TEST(HostWithItsOwnNameVariable, IsFollowedByTheFallback) {
  InstallPlugin("dsdr");
  const AggregatorLibrary library;
  library.Start(nullptr, 1);
  DefaultRngInfo info{};
  EXPECT_EQ(0, library.GetDefaultRng(&info, 2));
  rngBioQt = "dsdr";
  EXPECT_EQ(1, library.GetDefaultRng(&info, 2));
  EXPECT_STREQ("dsdr", info.type);
}

TEST(HostWithItsOwnNameVariable, LeavesTheOthersToTheLibrary) {
  const AggregatorLibrary library;
  for (const char* name : {"bio", "unixx11", "biokbd"}) {
    EXPECT_EQ(1, library.IsInteractiveRng(name)) << name;
  }
}
