#include "tools/rngctl/loader/configured.h"

#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ConfiguredDirectories, AreThoseOfTheFileAndOfWhatItIncludes) {
  std::filesystem::create_directories(TreePath("conf.d"));
  WriteFile(TreePath("ld.so.conf"),
            "# a comment\n/opt/one # and another\ninclude conf.d/*.conf\n\n  /opt/four=libc6\n");
  WriteFile(TreePath("conf.d/a.conf"), "/opt/two\n");
  WriteFile(TreePath("conf.d/b.conf"), "/opt/three\n");
  WriteFile(TreePath("conf.d/c.other"), "/opt/not\n");
  EXPECT_THAT(ListConfiguredDirectories(TreePath("ld.so.conf")),
              ElementsAre("/opt/one", "/opt/two", "/opt/three", "/opt/four"));
}

TEST(ConfiguredDirectories, AreNoneWithoutTheFile) {
  EXPECT_THAT(ListConfiguredDirectories(TreePath("ld.so.conf")), IsEmpty());
}

TEST(ConfiguredDirectories, EndWhereAFileIncludesItself) {
  WriteFile(TreePath("ld.so.conf"), "/opt/one\ninclude ld.so.conf\n");
  EXPECT_EQ("/opt/one", ListConfiguredDirectories(TreePath("ld.so.conf")).at(0));
}
