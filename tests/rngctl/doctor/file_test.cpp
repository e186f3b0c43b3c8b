#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <cstddef>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

TEST_F(Doctor, QuotesTheLoaderOnAFileThatIsNoLibrary) {
  const std::string file = TreePath("lib/librngdsdr.so");
  WriteFile(file, std::string(1000, 'x'));
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("cannot-be-opened", row.at("verdict"));
  EXPECT_EQ("cannot be opened: " + file + ": invalid ELF header", row.at("summary"));
  EXPECT_EQ(file, row.at("file"));
}

namespace {

const std::string kNoSuchFile =
    "librngdsdr.so: cannot open shared object file: No such file or directory";

// An ELF file of which the loader reads only the header.
void WriteForeignLibrary(const std::string& file) {
  fs::copy_file(FakePlugin("dsdr", "stub"), file);
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(offsetof(Elf64_Ehdr, e_machine));
  stream.put(static_cast<char>(EM_AARCH64));
}

}  // namespace

TEST_F(Doctor, PassesOverAFileForAnotherMachineAsTheLoaderDoes) {
  const std::string foreign = TreePath("lib/librngdsdr.so");
  WriteForeignLibrary(foreign);
  const json alone = ExamineKind("dsdr");
  EXPECT_EQ("cannot be opened: it is built for another machine: " + kNoSuchFile,
            alone.at("summary"));
  EXPECT_EQ(foreign, alone.at("file"));
  EXPECT_THAT(Text(alone.at("fix")), HasSubstr("Make " + foreign));

  fs::create_directory(TreePath("other"));
  fs::copy(FakePlugin("dsdr", "stub"), TreePath("other"));
  const json second = ExamineKind("dsdr", "LD_LIBRARY_PATH=" + TreePath("other"));
  EXPECT_EQ("loaded", second.at("verdict"));
  EXPECT_EQ(TreePath("other/librngdsdr.so"), second.at("file"));
}

TEST_F(Doctor, FindsALinkThatLeadsNowhere) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::create_symlink(TreePath("lib/gone"), file);
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("cannot be opened: it is a dangling link: " + kNoSuchFile, row.at("summary"));
  EXPECT_EQ(file, row.at("file"));
  EXPECT_THAT(Text(row.at("fix")), HasSubstr(file));
}

TEST_F(Doctor, APipeInAPluginsPlaceIsWaitedForNoLongerThanAPlugin) {
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngdsdr.so").c_str(), 0600));
  EXPECT_EQ("did not answer within 1 s while being opened",
            ExamineKind("dsdr", "", 1).at("summary"));
}

TEST_F(Doctor, AFileThatIsCutOffMayBeIncomplete) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::copy(FakePlugin("dsdr", "stub"), file);
  fs::resize_file(file, 4096);
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("crashed with signal 7 (Bus error) while being opened", row.at("summary"));
  EXPECT_THAT(Text(row.at("fix")), StartsWith("Reinstall the file"));

  // Cut off within the header: the loader fails instead of skipping the file.
  fs::resize_file(file, 10);
  fs::create_directory(TreePath("other"));
  fs::copy(FakePlugin("dsdr", "stub"), TreePath("other"));
  EXPECT_EQ("cannot be opened: " + file + ": file too short",
            ExamineKind("dsdr", "LD_LIBRARY_PATH=" + TreePath("other")).at("summary"));
}

TEST_F(Doctor, ShowsFilesThatLookLikePluginsAndAreOfNoKind) {
  fs::copy(FakePlugin("dsdr", "stub"), TreePath("lib/librngDsdr.so"));
  const json report = Examine("");
  EXPECT_EQ(json({TreePath("lib/librngDsdr.so")}), report.at("strays"));
  EXPECT_EQ("not-installed", RowOf(report, "dsdr").at("verdict"));
}
