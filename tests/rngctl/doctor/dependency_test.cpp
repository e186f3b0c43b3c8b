#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <elf.h>
#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class DoctorOnDependency : public Doctor {
 protected:
  void SetUp() override {
    Doctor::SetUp();
    InstallPlugin("biokbd", "missing_dependency");
    fs::create_directory(TreePath("needed"));
  }

  static json Row() { return ExamineKind("biokbd", "LD_LIBRARY_PATH=" + TreePath("needed")); }

  static std::string Needed() { return TreePath("needed/libabsent_device.so"); }
};

}  // namespace

TEST_F(DoctorOnDependency, NamesTheOneThatIsBroken) {
  WriteFile(Needed(), "short");
  const json row = Row();
  EXPECT_EQ("cannot-be-opened", row.at("verdict"));
  EXPECT_EQ("cannot be opened: \"" + Needed() + "\" is broken: " + Needed() + ": file too short",
            row.at("summary"));
  EXPECT_EQ(
      "Reinstall the plug-in's dependency \"" + Needed() + "\". The plug-in itself may be fine.",
      row.at("fix"));
}

TEST_F(DoctorOnDependency, NamesTheOneOfAnotherMachine) {
  std::string header(sizeof(Elf64_Ehdr), '\0');
  header.replace(0, SELFMAG, ELFMAG);
  header[EI_CLASS] = ELFCLASS32;
  header[EI_DATA] = ELFDATA2LSB;
  header[EI_VERSION] = EV_CURRENT;
  WriteFile(Needed(), header);
  const json row = Row();
  EXPECT_THAT(Text(row.at("summary")),
              HasSubstr("\"libabsent_device.so\" is built for another machine: "));
  EXPECT_THAT(Text(row.at("fix")),
              testing::StrEq("Install a build of the dependency \"libabsent_device.so\" for this "
                             "system. The plug-in itself may be fine."));
}

TEST_F(DoctorOnDependency, NamesTheFunctionThatItLacks) {
  fs::copy(FakePlugin("dsdr", "stub"), Needed());
  const json row = Row();
  EXPECT_THAT(Text(row.at("summary")), HasSubstr("undefined symbol: FindDevice"));
  EXPECT_THAT(Text(row.at("fix")),
              testing::StrEq("Install the versions of its dependencies that the plug-in was built "
                             "with: one of them must define the function \"FindDevice\". Or "
                             "install the vendor's build for this system."));
}

TEST_F(Doctor, TellsAFunctionOfTheLibraryFromOneThatIsMissing) {
  InstallPlugin("dsdr", "unlinked");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_EQ(
      "It uses the function \"GetRng\" of librngaggregator.so but is not linked with that library. "
      "It works in programs that are linked with the library, and fails in programs that open it "
      "with dlopen. Ask the vendor to link the plug-in with -lrngaggregator.",
      row.at("warnings")[0]);
}

// Libraries are often installed under a link.
TEST_F(DoctorOnDependency, MayBeALink) {
  fs::copy_file(FAKES_DIR "/missing_dependency/libabsent_device.so", TreePath("needed/real"));
  fs::create_symlink("real", Needed());
  EXPECT_EQ(json::array(),
            Examine("biokbd", "LD_LIBRARY_PATH=" + TreePath("needed")).at("permissions"));
}
