// What "default set" does with the settings file if storing fails partway.

#include "tests/rngctl/default/settings_of_tree.h"
#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr int kWholeDefault =
    80;  // less than both entries and the rest, more than the entries alone

std::size_t CountFiles() {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(TreePath("etc")), {}));
}

class PutBack : public RngctlTest {
 protected:
  // Stores while all copies of the file are cut to that size.
  static Result SetWithCuts(int size, const std::string& environment = "") {
    return RunShell(
        "LD_PRELOAD=" FAKE_LIBS_DIR "/cuts_copies.so RNG_TEST_SIZE=" + std::to_string(size) + " " +
        environment + " " + Rngctl() + " default set unixdev");
  }

  static void ExpectOldFile(const Result& result, const std::string& why) {
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("rngctl: "), HasSubstr(why), HasSubstr(" is as it was before.\n")));
    EXPECT_EQ(kOldSettings, ReadFile(Ini()));
    EXPECT_EQ(1U, CountFiles());
  }
};

}  // namespace

TEST_F(PutBack, ACutFileIsReplacedByTheOldOne) {
  WriteFile(Ini(), kOldSettings);
  fs::permissions(Ini(), fs::perms(0640));
  const Result result = SetWithCuts(5);
  ExpectOldFile(result,
                "The default could not be stored in " + Ini() + ": it reads back as \"none\". ");
  EXPECT_EQ(0640U, ModeOf(Ini()));
}

TEST_F(PutBack, AFileThatLostOtherSettingsIsReplacedByTheOldOne) {
  WriteFile(Ini(), kOldSettings);
  ExpectOldFile(SetWithCuts(kWholeDefault), ": other settings were lost. ");
}

TEST_F(PutBack, TheOldFileBelongsToItsOldOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  WriteFile(Ini(), kOldSettings);
  fs::permissions(Ini(), fs::perms(0600));
  ASSERT_EQ(0, ::chown(Ini().c_str(), 4711, 4712));
  const Result result = SetWithCuts(5);
  ExpectOldFile(result, "reads back");
  EXPECT_THAT(result.errors, Not(HasSubstr("Warning")));
  struct stat status = {};
  ASSERT_EQ(0, ::stat(Ini().c_str(), &status));
  EXPECT_EQ(4711U, status.st_uid);
  EXPECT_EQ(4712U, status.st_gid);
}

TEST_F(PutBack, AHalfFileDoesNotStayIfThereWasNone) {
  fs::create_directory(TreePath("etc"));
  const Result result = SetWithCuts(5);
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr(" There is still no " + Ini() + ".\n"));
  EXPECT_EQ(0U, CountFiles());
}

TEST_F(PutBack, ALinkIsALinkAgain) {
  WriteFile(TreePath("place/ini"), kOldSettings);
  fs::create_directory(TreePath("etc"));
  fs::create_symlink("../place/ini", Ini());
  ExpectOldFile(SetWithCuts(5), "reads back");
  EXPECT_EQ("../place/ini", fs::read_symlink(Ini()));
}

// The half file may have taken the last space.
TEST_F(PutBack, ItIsTriedOnceMoreWithoutTheHalfFile) {
  for (const char* failure : {"RNG_TEST_FAILED_SYNCS=1", "RNG_TEST_FAILED_WRITES=1"}) {
    SCOPED_TRACE(failure);
    WriteFile(Ini(), kOldSettings);
    ExpectOldFile(SetWithCuts(5, failure), "reads back");
  }
}

TEST_F(PutBack, AFailureToPutItBackIsSaid) {
  for (const auto& [failure, reason] :
       {std::pair("RNG_TEST_FAILED_SYNCS=2", "(Input/output error)"),
        std::pair("RNG_TEST_FAILED_WRITES=2", "(No space left on device)")}) {
    SCOPED_TRACE(failure);
    WriteFile(Ini(), kOldSettings);
    const Result result = SetWithCuts(5, failure);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr(" The old content of " + Ini() +
                                         " could not be restored " + reason + ".\n"));
    EXPECT_EQ(0U, CountFiles());  // no half file
  }
}

// The service is asked three times while the library stores, and is not asked for the device any more.
TEST_F(PutBack, AServiceThatCrashesWhileTheLibraryStoresChangesNothing) {
  WriteFile(Ini(), kOldSettings);
  InstallKnownPath("crashing_later");
  const Result result = Run("default set unixdev X1");
  ExpectOldFile(result, "rngctl: The known-path service crashed with signal 6 (Aborted). ");
  EXPECT_THAT(result.errors, EndsWith("\nRun \"rngctl doctor\" to find out which file it is.\n"));
}
