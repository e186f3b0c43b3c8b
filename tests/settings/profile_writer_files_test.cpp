// What the writer does to files: those it cannot open, the temporary one, and the one it leaves.

#include "tests/settings/profile.h"
#include "tests/support/allocation.h"
#include "tests/support/open_files.h"
#include "tests/support/permissions.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <sys/resource.h>

using namespace std::string_literals;

namespace fs = std::filesystem;

// What a case has to say about the replacing of the file; the real calls where it says nothing.
static std::function<int(const char*)> g_unlink;
static std::function<int(const char*, const char*)> g_rename;

// These two stand before the C library's.
extern "C" int unlink(const char* path) noexcept {
  return g_unlink ? g_unlink(path) : ::unlinkat(AT_FDCWD, path, 0);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  return g_rename ? g_rename(from, to) : ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

// --- Files that cannot be opened

TEST(WriteProfileString, FileThatCanNeitherBeReadNorCreatedIsRefused) {
  WriteFile(TreePath("empty/file"), "content");
  fs::create_symlink("missing/target", TreePath("empty/dangling"));
  fs::current_path(TreePath("empty"));
  for (const std::string& path :
       {""s, TreePath("missing/profile.ini"), TreePath("empty/file/below"),
        TreePath("empty/dangling"), TreePath("empty/" + Times(256, 'n'))}) {
    EXPECT_EQ(0, WriteProfileString("sec", "key", "new", path.c_str())) << path;
  }
  EXPECT_EQ(2, std::distance(fs::directory_iterator(TreePath("empty")), {}));
  EXPECT_EQ("content", ReadFile(TreePath("empty/file")));
  EXPECT_FALSE(fs::exists(TreePath("missing")));
}

TEST(WriteProfileString, FileInADirectoryThatMustNotBeChangedIsRefused) {
  const std::string path = TreePath("closed/profile.ini");
  fs::create_directory(TreePath("closed"));
  fs::permissions(TreePath("closed"), fs::perms(0555));
  const Unprivileged unprivileged;
  EXPECT_EQ(0, WriteProfileString("sec", "key", "new", path.c_str()));
  EXPECT_FALSE(fs::exists(path));
}

TEST(WriteProfileString, FileThatMustNotBeReadIsWrittenAnew) {
  WriteFile(ProfilePath(), "[other]\na=1\n\n[sec]\nkey=old\nlonger than the new content\n");
  fs::permissions(ProfilePath(), fs::perms(0222));
  {
    const Unprivileged unprivileged;
    EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  }
  fs::permissions(ProfilePath(), fs::perms(0644));
  EXPECT_EQ("[sec]\nkey=new\n", ReadFile(ProfilePath()));
}

TEST(WriteProfileString, FileIsUntouchedWhereTheTemporaryOneCannotBeCreated) {
  const std::string content = "[sec]\r\nkey=old\r\nlast";
  const std::string longName = TreePath(Times(252, 'n'));  // with ".tmp" one character too many
  for (const std::string& path : {ProfilePath(), longName}) WriteFile(path, content);
  fs::create_directory(TemporaryPath());
  for (const std::string& path : {ProfilePath(), longName}) {
    EXPECT_EQ(0, WriteProfileString("sec", "key", "new", path.c_str()));
    EXPECT_EQ(content, ReadFile(path));
  }
  EXPECT_TRUE(fs::is_empty(TemporaryPath()));
}

TEST(WriteProfileString, FileIsUntouchedWhereItsDirectoryMustNotBeChanged) {
  const std::string path = TreePath("closed/profile.ini");
  WriteFile(path, "[sec]\nkey=old\n");
  fs::permissions(path, fs::perms(0666));
  fs::permissions(TreePath("closed"), fs::perms(0555));
  {
    const Unprivileged unprivileged;
    EXPECT_EQ(0, WriteProfileString("sec", "key", "new", path.c_str()));
    EXPECT_EQ("[sec]\nkey=old\n", ReadFile(path));
  }
  fs::permissions(TreePath("closed"), fs::perms(0755));
}

// --- The temporary file

TEST(WriteProfileString, NewFileNeedsNoTemporaryOne) {
  fs::create_directory(TemporaryPath());
  EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_EQ("[sec]\nkey=new\n", ReadFile(ProfilePath()));
}

TEST(WriteProfileString, LeftOverTemporaryFileIsTruncated) {
  WriteFile(TemporaryPath(), Times(1000, 'x'));
  EXPECT_EQ("[sec]\nkey=new\n", Written("[sec]\nkey=old\n"));
}

TEST(WriteProfileString, LeftOverTemporaryFileIsNotLookedAtForANewFile) {
  WriteFile(TemporaryPath(), "left over");
  EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_EQ("[sec]\nkey=new\n", ReadFile(ProfilePath()));
  EXPECT_EQ("left over", ReadFile(TemporaryPath()));
}

TEST(WriteProfileString, CompleteTemporaryFileIsMovedToThePlaceOfTheRemovedOne) {
  std::string renamed, content, readBetween;
  g_rename = [&](const char* from, const char* to) {
    renamed = "from "s + from + " to " + to;
    content = ReadFile(from);
    readBetween = fs::exists(to) ? "not removed" : ReadBack();
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
  };
  EXPECT_EQ("[sec]\nkey=new\n", Written("[sec]\nkey=old\n"));
  EXPECT_EQ("from " + TemporaryPath() + " to " + ProfilePath(), renamed);
  EXPECT_EQ("[sec]\nkey=new\n", content);
  EXPECT_EQ("default", readBetween);
}

TEST(WriteProfileString, OldFileStaysUntilTheTemporaryOneIsComplete) {
  std::string old, content;
  g_unlink = [&](const char* path) {
    old = ReadFile(path);
    content = ReadFile(TemporaryPath());
    return ::unlinkat(AT_FDCWD, path, 0);
  };
  Written("[sec]\nkey=old\n");
  EXPECT_EQ("[sec]\nkey=old\n", old);
  EXPECT_EQ("[sec]\nkey=new\n", content);
}

// --- Failures that are not noticed

TEST(WriteProfileString, FailingRenameLeavesTheNewContentUnderTheTemporaryName) {
  WriteFile(ProfilePath(), "[sec]\nkey=old\n");
  g_rename = [](const char*, const char*) { return -1; };
  EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_FALSE(fs::exists(ProfilePath()));
  EXPECT_EQ("[sec]\nkey=new\n", ReadFile(TemporaryPath()));
}

TEST(WriteProfileString, FailingUnlinkIsNotNoticed) {
  WriteFile(ProfilePath(), "[sec]\nkey=old\n");
  g_unlink = [](const char*) { return -1; };
  EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_EQ("[sec]\nkey=new\n", ReadFile(ProfilePath()));
}

TEST(WriteProfileString, DirectoryInThePlaceOfTheFileReadsAsEmptyAndStays) {
  fs::create_directory(ProfilePath());
  EXPECT_EQ(1, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_TRUE(fs::is_directory(ProfilePath()));
  EXPECT_EQ("\n[sec]\nkey=new\n", ReadFile(TemporaryPath()));
}

TEST(WriteProfileString, FailingWritesAreNotNoticed) {
  ::signal(SIGXFSZ, SIG_IGN);
  for (const bool exists : {false, true}) {
    if (exists) WriteFile(ProfilePath(), "[sec]\nkey=old\n");
    rlimit before{};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &before));
    const rlimit nothing{0, before.rlim_max};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &nothing));
    const int result = WriteProfileString("sec", "key", "new", ProfilePath().c_str());
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &before));
    EXPECT_EQ(1, result);
    EXPECT_EQ("", ReadFile(ProfilePath()));
    EXPECT_TRUE(fs::exists(ProfilePath()));
  }
}

// --- What kind of file it leaves

TEST(WriteProfileString, NewFileHasTheOrdinaryModeLessTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U}) {
    const Umask umask(mask);
    fs::remove(ProfilePath());
    Rewrite("sec", "key", "new");
    EXPECT_EQ(0666 & ~mask, ModeOf(ProfilePath()));
  }
}

TEST(WriteProfileString, RewrittenFileHasTheOrdinaryModeNotTheOldOne) {
  for (const mode_t mask : {0U, 022U, 077U}) {
    const Umask umask(mask);
    for (const unsigned old : {0400U, 0600U, 0777U}) {
      WriteFile(ProfilePath(), "[sec]\nkey=old\n");
      fs::permissions(ProfilePath(), fs::perms(old));
      Rewrite("sec", "key", "new");
      EXPECT_EQ(0666 & ~mask, ModeOf(ProfilePath()));
    }
  }
}

TEST(WriteProfileString, RewrittenFileBelongsToTheWriter) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  WriteFile(ProfilePath(), "[sec]\nkey=old\n");
  ASSERT_EQ(0, ::chown(ProfilePath().c_str(), 65534, 65534));
  Rewrite("sec", "key", "new");
  struct stat file {};
  ASSERT_EQ(0, ::stat(ProfilePath().c_str(), &file));
  EXPECT_EQ(0U, file.st_uid);
}

TEST(WriteProfileString, RewritingMakesANewFile) {
  WriteFile(TreePath("linked"), "[sec]\nkey=old\n");
  fs::create_hard_link(TreePath("linked"), ProfilePath());
  EXPECT_EQ("[sec]\nkey=new\n", Rewrite("sec", "key", "new"));
  EXPECT_EQ("[sec]\nkey=old\n", ReadFile(TreePath("linked")));
}

TEST(WriteProfileString, SymbolicLinkIsReplacedAndItsTargetKept) {
  WriteFile(TreePath("linked"), "[sec]\nkey=old\n");
  fs::create_symlink("linked", ProfilePath());
  EXPECT_EQ("[sec]\nkey=new\n", Rewrite("sec", "key", "new"));
  EXPECT_FALSE(fs::is_symlink(ProfilePath()));
  EXPECT_EQ("[sec]\nkey=old\n", ReadFile(TreePath("linked")));
}

TEST(WriteProfileString, ClosesItsFilesOnEveryWay) {
  const auto before = CountOpenFiles();
  Rewrite("sec", "key", "new");  // a new file
  EXPECT_EQ(before, CountOpenFiles());
  for (const std::string& content :
       {""s, "[sec]\n"s, "[sec]\nkey=old\n"s, "[sec]\n\n"s, Times(600, 'x'), "last"s}) {
    Written(content);
    EXPECT_EQ(before, CountOpenFiles()) << content;
  }
  fs::create_directory(TemporaryPath());
  EXPECT_EQ(0, WriteProfileString("sec", "key", "new", ProfilePath().c_str()));
  EXPECT_EQ(0, WriteProfileString("sec", "key", "new", TreePath("missing/file").c_str()));
  EXPECT_EQ(before, CountOpenFiles());
}

TEST(WriteProfileString, ExhaustedMemoryReachesTheCallerAndTheFileIsUntouched) {
  const std::string path = ProfilePath();
  WriteFile(path, "[sec]\r\nkey=old");
  FailAllocation(1);
  EXPECT_THROW(WriteProfileString("sec", "key", "new", path.c_str()), std::bad_alloc);
  EXPECT_EQ("[sec]\r\nkey=old", ReadFile(path));
  EXPECT_FALSE(fs::exists(TemporaryPath()));
}
