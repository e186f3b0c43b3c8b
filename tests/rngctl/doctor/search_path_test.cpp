#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, ShowsTheLibraryAndWhereItSearches) {
  const json library = Examine("dsdr", "LD_LIBRARY_PATH=/opt/one/:/opt/two").at("library");
  EXPECT_THAT(Text(library.at("file")), StartsWith(TreePath("lib/librngaggregator.so")));
  EXPECT_EQ("$ORIGIN/../lib", library.at("run_path"));
  EXPECT_EQ(json({TreePath("lib"), "/opt/one", "/opt/two"}), library.at("directories"));
  EXPECT_THAT(library.at("default_directories"), Not(IsEmpty()));
}

TEST_F(Doctor, TellsTheSystemsDirectoriesFromThoseOfTheEnvironment) {
  const json defaults = Examine("dsdr").at("library").at("default_directories");
  for (const char* odd :
       {"'/opt/one;/opt/two:'", "'$ORIGIN/x'", ":", "/lib:/usr/lib/", "//opt//"}) {
    const std::string environment = std::string("LD_LIBRARY_PATH=") + odd;
    EXPECT_EQ(defaults, Examine("dsdr", environment).at("library").at("default_directories"))
        << odd;
  }
}

TEST_F(Doctor, WarnsOfAnotherLibraryThatProgramsMayLoad) {
  const std::string own = Examine("dsdr").at("library").at("file");
  const std::string name = fs::path(own).filename();
  const auto warning = [](const std::string& other, const std::string& used) {
    return "Programs may load " + other + " instead of " + used +
           ", which rngctl uses: that depends on their run paths and on LD_LIBRARY_PATH. Remove "
           "the one that you do not need.";
  };
  fs::create_directory(TreePath("other"));
  const std::string other = TreePath("other/") + name;
  fs::copy_file(own, other);
  const std::string environment = "LD_LIBRARY_PATH=" + TreePath("other");
  const json warned = Examine("dsdr", environment);
  const std::string used = warned.at("library").at("file");
  EXPECT_EQ(warning(used == own ? other : own, used), warned.at("library").at("warning"));
  EXPECT_EQ(0, MatchSchema("doctor.schema.json", warned.dump()).status);

  fs::copy_file(own, TreePath("bin/") + name);
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nLibrary, warning: " + warning(TreePath("bin/") + name, own) + "\n"));
}

TEST_F(Doctor, ALinkToTheLibraryIsNoOtherLibrary) {
  const std::string own = Examine("dsdr").at("library").at("file");
  fs::create_directory(TreePath("other"));
  fs::create_symlink(own, TreePath("other/") + fs::path(own).filename().string());
  WriteFile(TreePath("other/librngaggregator.so.0"), "");
  const json library = Examine("dsdr", "LD_LIBRARY_PATH=" + TreePath("other")).at("library");
  EXPECT_EQ(json(), library.at("warning"));
}

// An empty entry is the present folder, and the loader then names the library without a folder.
TEST_F(Doctor, FindsALibraryInThePresentFolder) {
  InstallPlugin("dsdr", "stub");
  const json before = Examine("dsdr").at("library");
  RunShell("mv " + TreePath("lib") + "/librngaggregator.so* " + TreePath("bin"));
  const Result result =
      RunShell("cd " + TreePath("bin") + " && LD_LIBRARY_PATH=:" + TreePath("bin") +
               " ./rngctl doctor dsdr --json");
  EXPECT_EQ(0, result.status) << result.errors;
  const json report = json::parse(result.output, nullptr, false);
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
  EXPECT_EQ(before.at("default_directories"), report.at("library").at("default_directories"));
}

TEST_F(Doctor, RefusesAFolderThatNoSearchPathCanName) {
  RunShell("mkdir " + TreePath("a:b") + "; cp -r " + TreePath("bin") + " " + TreePath("lib") + " " +
           TreePath("a:b"));
  const Result result = RunShell(TreePath("a:b/bin/rngctl") + " doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("a colon, a semicolon or a dollar sign"));
}

TEST_F(Doctor, TheFileBesideTheLibraryComesFirst) {
  InstallPlugin("dsdr", "stub");
  fs::create_directory(TreePath("other"));
  fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
  const std::string environment = "LD_LIBRARY_PATH=" + TreePath("other");
  EXPECT_EQ(TreePath("other/librngdsdr.so"), ExamineKind("dsdr", environment).at("file"));
  InstallPlugin("dsdr", "no_factory");
  EXPECT_EQ(TreePath("lib/librngdsdr.so"), ExamineKind("dsdr", environment).at("file"));
  EXPECT_EQ("no-factory", ExamineKind("dsdr", environment).at("verdict"));
}

// The library's run path applies to plug-ins, not to their dependencies.
TEST_F(Doctor, WhatAPluginNeedsIsNotFoundBesideIt) {
  InstallPlugin("biokbd", "missing_dependency");
  InstallPlugin("unixdev");
  fs::copy(FAKES_DIR "/missing_dependency/libabsent_device.so", TreePath("lib"));
  EXPECT_EQ("cannot-be-opened", ExamineKind("biokbd").at("verdict"));
  EXPECT_THAT(
      Text(ExamineKind("biokbd").at("fix")),
      testing::StrEq("Install the plug-in's dependency \"libabsent_device.so\" where the loader "
                     "finds it, or ask the vendor for a plug-in with a run path: without one the "
                     "loader does not search the plug-in's own directory."));
  EXPECT_THAT(RunShell(Rngctl() + " list").output, Not(HasSubstr("biokbd")));
  const std::string environment = "LD_LIBRARY_PATH=" + TreePath("lib");
  EXPECT_NE("cannot-be-opened", ExamineKind("biokbd", environment).at("verdict"));
}
