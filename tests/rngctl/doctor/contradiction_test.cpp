// Plug-ins that work alone, but that no host gets because of others.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

// Whether a host gets a generator of that name.
bool HostGets(const std::string& kind) {
  const Result host = RunForked([&kind] {
    static const AggregatorLibrary aggregator;
    aggregator.Initialize(aggregator.GetDefaultSettings());
    return aggregator.GetRng(kind.c_str()) ? 0 : 1;
  });
  return host.status == 0;
}

}  // namespace

TEST_F(Doctor, TwoPluginsWithAClassOfTheSameNameAreToldApart) {
  InstallPlugin("dsdr", "shared_class");
  InstallPlugin("sobol", "shared_class");
  ASSERT_TRUE(HostGets("dsdr"));
  ASSERT_FALSE(HostGets("sobol"));
  const json report = Examine("");
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
  const json sobol = RowOf(report, "sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(false, sobol.at("kept"));
  EXPECT_EQ(
      "loaded as \"sobol\", but GetRng(\"sobol\") returns null: its generator runs the code of " +
          TreePath("lib/librngdsdr.so"),
      sobol.at("summary"));
  EXPECT_EQ(
      "Both plug-ins define a class of the same name. Ask the vendors to hide everything but the "
      "factory (-fvisibility=hidden), and keep one of the two until then.",
      sobol.at("fix"));
  EXPECT_EQ(sobol.at("summary"), ExamineKind("sobol").at("summary"));
  EXPECT_EQ(0, Run("doctor dsdr").status);
  EXPECT_EQ(1, Run("doctor sobol").status);
}

TEST_F(Doctor, APluginWithTheNameOfAnotherTakesItsPlace) {
  InstallPlugin("dsdr", "takes_name");
  InstallPlugin("sobol", "stub");
  ASSERT_FALSE(HostGets("sobol"));
  const json sobol = ExamineKind("sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(
      "loaded as \"sobol\", but a start uses " + TreePath("lib/librngdsdr.so") + " in its place",
      sobol.at("summary"));
  EXPECT_EQ("The loader never opens " + TreePath("lib/librngsobol.so") + ", because " +
                TreePath("lib/librngdsdr.so") +
                " has the SONAME \"librngsobol.so\". If LD_PRELOAD names " +
                TreePath("lib/librngdsdr.so") +
                ", remove it there; otherwise ask its vendor for a version with its own SONAME.",
            sobol.at("fix"));
  EXPECT_EQ(TreePath("lib/librngsobol.so"), sobol.at("file"));
  EXPECT_EQ(1, Run("doctor sobol").status);
  EXPECT_EQ(0, Run("doctor dsdr").status);
}

TEST_F(Doctor, ALibraryThatIsPreloadedTakesThePlaceOfAPlugin) {
  InstallPlugin("sobol", "stub");
  fs::copy_file(FakePlugin("dsdr", "takes_name"), TreePath("preloaded.so"));
  const json sobol = ExamineKind("sobol", "LD_PRELOAD=" + TreePath("preloaded.so"));
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_THAT(Text(sobol.at("summary")), HasSubstr(TreePath("preloaded.so")));
  EXPECT_THAT(Text(sobol.at("fix")), HasSubstr("LD_PRELOAD"));
}

TEST_F(Doctor, APluginThatClosesAnotherIsNamed) {
  InstallUnixDev();
  InstallPlugin("dsdr", "stub");
  InstallPlugin("sobol", "closes_another");
  const json report = Examine("");
  EXPECT_EQ("sobol", report.at("start").at("culprit"));  // even if nothing crashes this time
  const json dsdr = RowOf(report, "dsdr");
  EXPECT_EQ("contradicted", dsdr.at("verdict"));
  EXPECT_EQ("loaded as \"dsdr\", but " + TreePath("lib/librngsobol.so") + " closes it",
            dsdr.at("summary"));
  EXPECT_EQ("Report this to the vendor of " + TreePath("lib/librngsobol.so") +
                ": it closes a library that it did not open. Remove it until it is fixed.",
            dsdr.at("fix"));
  EXPECT_THAT(Text(report.at("start").at("problem")),
              AnyOf("succeeds by chance: " + TreePath("lib/librngsobol.so") + " closes " +
                        TreePath("lib/librngdsdr.so"),
                    StartsWith("crashed with signal ")));
  EXPECT_EQ(dsdr.at("summary"), ExamineKind("dsdr").at("summary"));
  EXPECT_EQ(1, Run("doctor dsdr").status);
}

TEST_F(Doctor, ANameOfAnotherKindHidesThatKind) {
  InstallPlugin("dsdr", "names_another_kind");
  InstallPlugin("sobol", "stub");
  ASSERT_TRUE(HostGets("sobol"));  // but the other one
  const json sobol = ExamineKind("sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ("loaded as \"sobol\", but GetRng(\"sobol\") returns the generator of " +
                TreePath("lib/librngdsdr.so"),
            sobol.at("summary"));
  EXPECT_EQ("Both plug-ins report this name. Keep one of them, or ask the vendor of " +
                TreePath("lib/librngdsdr.so") + " whether it is the plug-in for another kind.",
            sobol.at("fix"));
  EXPECT_EQ(true, sobol.at("kept"));
}

TEST_F(Doctor, ANameThatCannotBeAskedForHidesTheKindsBehindIt) {
  InstallUnixDev();
  InstallPlugin("dsdr", "stub");
  InstallPlugin("sobol", "nameless");  // with a negative size
  const json report = Examine("");
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
  const json unixdev = RowOf(report, "unixdev");
  EXPECT_EQ("contradicted", unixdev.at("verdict"));
  EXPECT_THAT(
      Text(unixdev.at("summary")),
      AllOf(StartsWith("loaded as \"unixdev\", but GetRng(\"unixdev\") throws an exception ("),
            HasSubstr(") because of " + TreePath("lib/librngsobol.so"))));
  EXPECT_EQ(
      "Remove " + TreePath("lib/librngsobol.so") + ", or get a fixed version from its vendor.",
      unixdev.at("fix"));
}

// GetRng skips a plug-in that reports no name.
TEST_F(Doctor, APluginWithoutANameIsNotBlamedForAnException) {
  InstallUnixDev();
  InstallPlugin("dsdr", "nameless");
  InstallPlugin("sobol", "nameless");  // with a negative size
  EXPECT_THAT(Text(RowOf(Examine(""), "unixdev").at("summary")),
              HasSubstr(" because of " + TreePath("lib/librngsobol.so")));
}

TEST_F(Doctor, APluginThatRenamesItselfBesideAnotherIsToldApart) {
  InstallPlugin("accord", "renames_beside_another");
  InstallPlugin("sobol", "renames_beside_another");
  const json sobol = RowOf(Examine(""), "sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(
      "loaded as \"sobol\", but GetRng(\"sobol\") returns null: in a start with all plug-ins, its "
      "name is \"second\"",
      sobol.at("summary"));
  EXPECT_EQ(
      "Programs get the result of the start. Check what else is installed, and ask the vendor "
      "about dependencies and conflicts.",
      sobol.at("fix"));
}

TEST_F(Doctor, TheFileForThisProcessorIsTheOneThatIsExamined) {
  InstallPlugin("dsdr", "stub");
  const std::string folder = TreePath("lib/glibc-hwcaps/x86-64-v2");
  fs::create_directories(folder);
  fs::copy(FakePlugin("dsdr", "breaking/unavailable"), folder);
  ASSERT_FALSE(HostGets("dsdr"));
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("not-available", row.at("verdict"));
  EXPECT_EQ(folder + "/librngdsdr.so", row.at("file"));
  EXPECT_EQ(1, Run("doctor dsdr").status);
}

TEST_F(Doctor, OneFileUnderTheNamesOfTwoKindsIsBothPlugins) {
  InstallPlugin("dsdr", "stub");
  fs::create_symlink(TreePath("lib/librngdsdr.so"), TreePath("lib/librngsobol.so"));
  const json report = Examine("");
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
  EXPECT_EQ("no-factory", RowOf(report, "sobol").at("verdict"));
  EXPECT_EQ(false, RowOf(report, "sobol").at("kept"));
}

// The class is hidden, but not its operation.
TEST_F(Doctor, TwoPluginsWithAnOperationOfTheSameNameAreToldApart) {
  InstallPlugin("dsdr", "shared_operation");
  InstallPlugin("sobol", "shared_operation");
  ASSERT_FALSE(HostGets("sobol"));
  EXPECT_EQ(
      "loaded as \"sobol\", but GetRng(\"sobol\") returns null: its generator runs the code of " +
          TreePath("lib/librngdsdr.so"),
      ExamineKind("sobol").at("summary"));
}
