#include "settings/directories.h"

#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

// What was looked at; the directories asked for, with the mode that was asked for in octal; and
// what somebody else does just before one is made.
static std::vector<std::string> g_examined;
static std::vector<std::string> g_asked;
static std::function<void(const char*)> g_beforeMkdir;

// These two stand before the C library's.
extern "C" int access(const char* path, int mode) noexcept {
  g_examined.push_back(path);
  return ::faccessat(AT_FDCWD, path, mode, 0);
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  char octal[16];
  std::snprintf(octal, sizeof octal, " %o", mode);
  g_asked.push_back(path + std::string(octal));
  if (g_beforeMkdir) g_beforeMkdir(path);
  return ::mkdirat(AT_FDCWD, path, mode);
}

namespace {

bool Create(const std::string& path) {
  g_examined.clear();
  g_asked.clear();
  return CreateParentDirectories(path.c_str());
}

bool CreateInTree(const std::string& path) { return Create(TreePath(path)); }

// One that a case fills from outside; made without a trace.
void MakeDirectory(const std::string& path) { ::mkdirat(AT_FDCWD, TreePath(path).c_str(), 0777); }

std::string Asked(const std::string& path) { return TreePath(path) + " 775"; }

}  // namespace

TEST(CreateParentDirectories, MakesWhatIsMissingFromTheTopButNotTheLastComponent) {
  EXPECT_TRUE(CreateInTree("a/b/c"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("a"), Asked("a/b")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
  EXPECT_FALSE(fs::exists(TreePath("a/b/c")));
}

TEST(CreateParentDirectories, MakesOnlyWhatIsMissing) {
  MakeDirectory("a");
  EXPECT_TRUE(CreateInTree("a/b/c/d"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("a/b"), Asked("a/b/c")));
}

TEST(CreateParentDirectories, MakesNothingWhereOnlyTheLastComponentIsMissing) {
  MakeDirectory("a");
  EXPECT_TRUE(CreateInTree("a/b"));
  EXPECT_THAT(g_asked, IsEmpty());
}

TEST(CreateParentDirectories, MakesEveryComponentBeforeATrailingSlash) {
  EXPECT_TRUE(CreateInTree("a/b/"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("a"), Asked("a/b")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
}

TEST(CreateParentDirectories, DoubledSlashesMakeNothingTwice) {
  EXPECT_TRUE(CreateInTree("/a//b///c"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("/a"), Asked("/a//b")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
  EXPECT_FALSE(fs::exists(TreePath("a/b/c")));
}

TEST(CreateParentDirectories, LooksAtTheWholePathAndThenAtEachPrefix) {
  EXPECT_TRUE(CreateInTree("a//b/c"));
  std::vector<std::string> expected = {TreePath("a//b/c")};
  const std::string tree = TreePath("");
  for (auto slash = tree.find('/', 1); slash != std::string::npos;
       slash = tree.find('/', slash + 1)) {
    expected.push_back(tree.substr(0, slash));  // never the empty one before the leading slash
  }
  for (const auto* prefix : {"a", "a/", "a//b"}) expected.push_back(TreePath(prefix));
  EXPECT_EQ(expected, g_examined);
}

TEST(CreateParentDirectories, DoubledSlashAtTheBeginning) {
  EXPECT_TRUE(Create("/" + TreePath("a/b")));
  EXPECT_THAT(g_asked, ElementsAre("/" + Asked("a")));
  EXPECT_TRUE(fs::is_directory(TreePath("a")));
}

TEST(CreateParentDirectories, DotsAreComponentsLikeAnyOther) {
  EXPECT_TRUE(CreateInTree("a/./b/../c/d"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("a"), Asked("a/./b"), Asked("a/./b/../c")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/c")));
}

TEST(CreateParentDirectories, ModeIs0775LessTheUmask) {
  const struct {
    mode_t umask;
    unsigned mode;
  } rows[] = {{0, 0775}, {022, 0755}, {07, 0770}, {077, 0700}};
  for (const auto& row : rows) {
    const std::string name = "made" + std::to_string(row.umask);
    const Umask umask(row.umask);
    EXPECT_TRUE(CreateInTree(name + "/below/file"));
    EXPECT_EQ(row.mode, ModeOf(TreePath(name)));
    EXPECT_EQ(row.mode, ModeOf(TreePath(name + "/below")));
  }
}

TEST(CreateParentDirectories, ModeOfWhatExistsIsKept) {
  MakeDirectory("a");
  fs::permissions(TreePath("a"), fs::perms(0701));
  EXPECT_TRUE(CreateInTree("a/b/c"));
  EXPECT_EQ(0701U, ModeOf(TreePath("a")));
}

TEST(CreateParentDirectories, PathThatExistsIsEnough) {
  MakeDirectory("a");
  WriteFile(TreePath("a/file"), "content");
  for (const auto* path : {"a", "a/", "a//", "a/file"}) {
    EXPECT_TRUE(CreateInTree(path)) << path;
    EXPECT_THAT(g_examined, ElementsAre(TreePath(path))) << path;
    EXPECT_THAT(g_asked, IsEmpty()) << path;
  }
  EXPECT_EQ("content", ReadFile(TreePath("a/file")));
}

TEST(CreateParentDirectories, RootAloneIsEnough) {
  for (const auto* path : {"/", "//"}) {
    EXPECT_TRUE(Create(path)) << path;
    EXPECT_THAT(g_asked, IsEmpty()) << path;
  }
}

TEST(CreateParentDirectories, EmptyAndRelativePathsAreRefused) {
  MakeDirectory("here");
  fs::current_path(TreePath("here"));
  for (const auto* path : {"", "a", "a/b", "./a/b", ".", "..", "../here", "../here/a/b", " /a/b"}) {
    EXPECT_FALSE(Create(path)) << path;
    EXPECT_THAT(g_asked, IsEmpty()) << path;
  }
  EXPECT_TRUE(fs::is_empty(TreePath("here")));
}

TEST(CreateParentDirectories, SymbolicLinkToADirectoryIsFollowed) {
  MakeDirectory("a");
  fs::create_symlink("a", TreePath("link"));
  EXPECT_TRUE(CreateInTree("link/b/c"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("link/b")));
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
}

TEST(CreateParentDirectories, LongPathIsNotCut) {
  std::string path = "a";
  while (path.size() < 2000) path += "/" + std::string(100, 'n');
  EXPECT_TRUE(CreateInTree(path + "/file"));
  EXPECT_TRUE(fs::is_directory(TreePath(path)));
}

// --- Failures

TEST(CreateParentDirectories, FileInTheWayIsAFailure) {
  WriteFile(TreePath("file"), "content");
  EXPECT_FALSE(CreateInTree("file/a/b"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("file/a")));
  EXPECT_EQ("content", ReadFile(TreePath("file")));
}

// The file passes for a directory that exists: it is only asked whether something is there.
TEST(CreateParentDirectories, FileAsTheLastDirectoryGoesUnnoticed) {
  WriteFile(TreePath("file"), "content");
  EXPECT_TRUE(CreateInTree("file/a"));
  EXPECT_THAT(g_asked, IsEmpty());
}

TEST(CreateParentDirectories, DanglingLinkIsAFailure) {
  fs::create_symlink("missing", TreePath("link"));
  EXPECT_FALSE(CreateInTree("link/a/b"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("link")));
  EXPECT_FALSE(fs::exists(TreePath("missing")));
}

TEST(CreateParentDirectories, WhatWasMadeBeforeAFailureStays) {
  EXPECT_FALSE(CreateInTree("a/b/" + std::string(256, 'n') + "/c/d"));
  EXPECT_EQ(3U, g_asked.size());  // the third fails, and no more are tried
  EXPECT_TRUE(fs::is_directory(TreePath("a/b")));
  EXPECT_TRUE(fs::is_empty(TreePath("a/b")));
}

TEST(CreateParentDirectories, DirectoryThatSomebodyElseMakesMeanwhileIsAFailure) {
  g_beforeMkdir = [](const char* path) {
    if (path == TreePath("a/b")) MakeDirectory("a/b");
  };
  EXPECT_FALSE(CreateInTree("a/b/c/d"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("a"), Asked("a/b")));
  EXPECT_FALSE(fs::exists(TreePath("a/b/c")));
}

TEST(CreateParentDirectories, NothingIsMadeBelowADirectoryThatMustNotBeChanged) {
  MakeDirectory("open");
  fs::permissions(TreePath("open"), fs::perms(0777));
  const Unprivileged unprivileged;
  const Umask umask(0222);  // makes directories that not even their maker may change
  EXPECT_FALSE(CreateInTree("open/a/b/c"));
  EXPECT_THAT(g_asked, ElementsAre(Asked("open/a"), Asked("open/a/b")));
  EXPECT_EQ(0555U, ModeOf(TreePath("open/a")));
  EXPECT_TRUE(fs::is_empty(TreePath("open/a")));
}

TEST(CreateParentDirectories, WhatMustNotBeLookedAtCountsAsMissing) {
  MakeDirectory("closed");
  MakeDirectory("closed/a");
  fs::permissions(TreePath("closed"), fs::perms(0));
  {
    const Unprivileged unprivileged;
    EXPECT_FALSE(CreateInTree("closed/a/b"));
    EXPECT_THAT(g_asked, ElementsAre(Asked("closed/a")));
  }
  fs::permissions(TreePath("closed"), fs::perms(0755));
}
