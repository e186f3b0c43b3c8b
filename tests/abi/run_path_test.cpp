#include "tests/abi/installed_host.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// Another plug-in under the file name of the kind "dsdr", in a folder of its own.
std::string FolderOfAnotherPlugin() {
  InstallPlugin("dsdr", "slot_table");
  fs::create_directory(TreePath("elsewhere"));
  fs::rename(TreePath("lib/librngdsdr.so"), TreePath("elsewhere/librngdsdr.so"));
  return TreePath("elsewhere");
}

}  // namespace

TEST(RunPath, PluginOfTheInstallationWinsOverLdLibraryPath) {
  const std::string elsewhere = FolderOfAnotherPlugin();
  InstallPlugin("dsdr");
  EXPECT_EQ("dsdr\n", RunInstalledHost("list_host", elsewhere));
}

// Without it the case above would not show that the other plug-in can be loaded at all.
TEST(RunPath, LdLibraryPathServesWhereTheInstallationHasNoPlugin) {
  EXPECT_EQ("slots\n", RunInstalledHost("list_host", FolderOfAnotherPlugin()));
}

TEST(RunPath, LeadsToLibBesideTheFolderOfTheLibrary) {
  InstallPlugin("dsdr");
  fs::create_directory(TreePath("engine"));
  fs::copy(TreePath("lib/librngaggregator.so"), TreePath("engine/librngaggregator.so.1"));
  fs::create_directory(TreePath("bin"));
  EXPECT_EQ("dsdr\n", RunInstalledHost("list_host", TreePath("engine")));
}
