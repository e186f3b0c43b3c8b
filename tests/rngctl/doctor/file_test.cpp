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
  EXPECT_EQ("Reinstall the plug-in, using the vendor's build for this system.", row.at("fix"));
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
  EXPECT_EQ("Replace " + foreign + " with a build for this machine (x86-64).", alone.at("fix"));

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
  EXPECT_EQ("cannot be opened: it is a dangling symbolic link: " + kNoSuchFile, row.at("summary"));
  EXPECT_EQ(file, row.at("file"));
  EXPECT_EQ("Reinstall the plug-in: " + file + " is a link to " + TreePath("lib/gone") +
                ", where there is no file.",
            row.at("fix"));
}

// None of these is opened: that could wait forever, or have an effect.
TEST_F(Doctor, NamesWhatIsInAPluginsPlaceAndIsNoFile) {
  const std::string file = TreePath("lib/librngdsdr.so");
  const auto examine = [&file](const char* verdict, const std::string& summary) {
    const json row = ExamineKind("dsdr");
    EXPECT_EQ(verdict, row.at("verdict")) << summary;
    EXPECT_EQ("cannot be opened: " + summary, row.at("summary"));
    EXPECT_EQ("Remove " + file + " and install the plug-in in its place.", row.at("fix"));
    fs::remove(file);
  };
  const std::string waits = ", and every program that starts the library hangs on it";
  ASSERT_EQ(0, ::mkfifo(file.c_str(), 0600));
  examine("no-answer", "it is a named pipe (FIFO)" + waits);
  fs::create_symlink("/dev/tty", file);
  examine("no-answer", "it is a terminal" + waits);
  ASSERT_EQ(0, ::mknod(file.c_str(), S_IFSOCK | 0600, 0));
  examine("cannot-be-opened", "it is a socket");
  fs::create_symlink("/dev/zero", file);
  examine("cannot-be-opened", "it is a device");
  fs::create_directory(file);
  examine("cannot-be-opened",
          "it is a directory: " + file + ": cannot read file data: Is a directory");
}

TEST_F(Doctor, NamesALinkThatLeadsBackToItself) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::create_symlink("librngdsdr.so", file);
  const json row = ExamineKind("dsdr");
  EXPECT_THAT(Text(row.at("summary")),
              HasSubstr("it is a symbolic link that leads back to itself"));
  EXPECT_EQ("Remove the link " + file + " to librngdsdr.so, and install the plug-in in its place.",
            row.at("fix"));
}

TEST_F(Doctor, NamesTheDirectoryThatThisUserMayNotSearch) {
  const std::string closed = TreePath("closed");
  fs::create_directory(closed);
  fs::copy(FakePlugin("dsdr", "stub"), closed + "/librngdsdr.so");
  fs::create_symlink(closed + "/librngdsdr.so", TreePath("lib/librngdsdr.so"));
  fs::permissions(closed, fs::perms(0600));
  const json linked = ExamineKindAsUser("dsdr");
  EXPECT_EQ("cannot-be-opened", linked.at("verdict"));
  EXPECT_THAT(Text(linked.at("summary")),
              StartsWith("cannot be opened: this user may not search the directory " + closed));
  EXPECT_EQ("Make it searchable: chmod a+x " + closed, linked.at("fix"));

  const json searched = ExamineKindAsUser("sobol", "LD_LIBRARY_PATH=" + closed);
  EXPECT_EQ("not-installed", searched.at("verdict"));
  EXPECT_EQ("not found: this user may not search the directory " + closed, searched.at("summary"));
}

TEST_F(Doctor, NamesAFileThatThisUserMayNotRead) {
  const std::string file = TreePath("lib/librngdsdr.so");
  InstallPlugin("dsdr", "stub");
  fs::permissions(file, fs::perms::none);
  const json row = ExamineKindAsUser("dsdr");
  EXPECT_THAT(Text(row.at("summary")), StartsWith("cannot be opened: this user may not read it"));
  EXPECT_EQ("Make it readable: chmod a+r " + file, row.at("fix"));
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

namespace {

json Stray(const std::string& name, const std::string& problem, const std::string& fix) {
  return {{"file", TreePath("lib/" + name)}, {"problem", problem}, {"fix", fix}};
}

}  // namespace

TEST_F(Doctor, ShowsFilesThatLookLikePluginsAndAreOfNoKind) {
  for (const char* name :
       {"librngDsdr.so", "librngmine.so", "librngsobol.so.1", "librngxscr.so", "rngaccord.so"}) {
    WriteFile(TreePath("lib/") + name, "");
  }
  fs::copy(FakePlugin("biocore", "stub"), TreePath("lib/librngfirst.so.1.2"));
  const std::string lib = TreePath("lib/");
  const std::string none = "no kind has a plug-in with this name";
  const std::string remove =
      "Remove it, or give it the file name of its kind; provider.h lists them.";
  const json report = Examine("");
  EXPECT_EQ(
      json({Stray("librngDsdr.so", none + "; did you mean librngdsdr.so?",
                  "Rename it to " + lib + "librngdsdr.so."),
            Stray("librngfirst.so.1.2", none + "; did you mean librngbiocore.so?",
                  "Rename it to " + lib + "librngbiocore.so."),
            Stray("librngmine.so", none, remove),
            Stray("librngsobol.so.1", "the library looks for librngsobol.so, without a version",
                  "Make " + lib + "librngsobol.so a symbolic link to it."),
            Stray("librngxscr.so", none, remove),
            Stray("rngaccord.so", none + "; did you mean librngaccord.so?",
                  "Rename it to " + lib + "librngaccord.so.")}),
      report.at("strays"));
  EXPECT_EQ("not-installed", RowOf(report, "dsdr").at("verdict"));
}

TEST_F(Doctor, AFileThatAPluginIsALinkToIsNoStray) {
  fs::copy(FakePlugin("dsdr", "stub"), TreePath("lib/librngdsdr.so.1.0"));
  fs::create_symlink("librngdsdr.so.1.0", TreePath("lib/librngdsdr.so"));
  WriteFile(TreePath("lib/librngdsdrr.so"), "");
  const json strays = Examine("").at("strays");
  ASSERT_EQ(1U, strays.size());
  EXPECT_EQ(
      "the library does not load a file of this name; it loads " + TreePath("lib/librngdsdr.so"),
      strays[0].at("problem"));
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nlibrngdsdrr.so: Remove whichever of the two is out of date.\n"));
}

TEST_F(Doctor, TheTextShowsEachUnknownFileOnce) {
  const std::string file = TreePath("lib/librngmine.so");
  WriteFile(file, "");
  const Result result = RunShell("LD_LIBRARY_PATH=" + TreePath("other") + ":" + TreePath("lib") +
                                 " " + Rngctl() + " doctor");
  const std::string line =
      "\nUnknown file     " + file + ": no kind has a plug-in with this name\n";
  EXPECT_THAT(result.output, HasSubstr(line));
  EXPECT_EQ(result.output.find(line), result.output.rfind(line)) << result.output;
}
