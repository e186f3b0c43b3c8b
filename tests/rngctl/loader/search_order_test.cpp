#include "tools/rngctl/loader/search_order.h"

#include "tests/support/tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::Contains;
using testing::Not;

namespace fs = std::filesystem;

// The loader ignores LD_LIBRARY_PATH in some processes, and then lists only the system's directories.
TEST(SearchOrder, OnlyTheGivenDirectoryIsNotTheSystems) {
  ASSERT_FALSE(std::getenv("LD_LIBRARY_PATH"));
  const std::vector<std::string> all = ListSystemDirectories("/nowhere");
  ASSERT_FALSE(all.empty());
  std::vector<std::string> others = ListSystemDirectories(all.back());
  EXPECT_EQ(all.size() - 1, others.size());
  EXPECT_TRUE(std::equal(others.begin(), others.end(), all.begin()));
  EXPECT_THAT(others, Not(Contains(all.back())));
}

TEST(SearchOrder, TheSystemsDirectoriesComeLast) {
  const std::vector<std::string> system = ListSystemDirectories("/nowhere");
  const SearchOrder order = FindSearchOrder(system);
  EXPECT_EQ(system, order.defaults);
  for (const std::string& directory : system) {
    EXPECT_THAT(order.directories, Not(Contains(directory)));
  }
}

TEST(SearchOrder, AFileForAnotherMachineIsPassedOver) {
  const SearchOrder order{"", {TreePath("one"), TreePath("two")}, {}};
  std::string foreign(64, '\0');
  foreign.replace(0, 6, std::string("\177ELF\1\1"));  // a 32-bit file
  WriteFile(TreePath("one/librngdsdr.so"), foreign);
  EXPECT_EQ("", FindAsLoaderDoes("librngdsdr.so", order));
  EXPECT_EQ(TreePath("one/librngdsdr.so"), FindFirst("librngdsdr.so", order));
  WriteFile(TreePath("two/librngdsdr.so"), "not a library, so the loader fails");
  EXPECT_EQ(TreePath("two/librngdsdr.so"), FindAsLoaderDoes("librngdsdr.so", order));
}

TEST(SearchOrder, PathsLoseTheirDotDot) {
  fs::create_directories(TreePath("bin"));
  EXPECT_EQ(fs::canonical(TreePath("lib")) / "a.so", WithoutDotDot(TreePath("bin/../lib/a.so")));
}
