#include "settings/profile_file.h"
#include "tests/settings/process.h"
#include "tests/support/allocation.h"
#include "tests/support/tree.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <sys/resource.h>
#include <vector>

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

namespace {

std::string ProfilePath() { return TreePath("profile.ini"); }
std::string TemporaryPath() { return TreePath("profile.ini.tmp"); }

std::string Times(std::size_t count, char c) { return std::string(count, c); }

// What the file holds after the writing; whatever the case, nothing else is left.
std::string Rewrite(const std::string& section, const std::string& key, const char* value) {
  EXPECT_EQ(1, WriteProfileString(section.c_str(), key.c_str(), value, ProfilePath().c_str()));
  EXPECT_FALSE(fs::exists(TemporaryPath()));
  return ReadFile(ProfilePath());
}

// What becomes of a file of that content when "key" in "sec" is set to "new".
std::string Written(const std::string& content) {
  WriteFile(ProfilePath(), content);
  return Rewrite("sec", "key", "new");
}

// "key" in "sec", "default" when nothing is found.
std::string ReadBack() {
  char buffer[1024] = {};
  ReadProfileString("sec", "key", "default", buffer, sizeof buffer, ProfilePath().c_str());
  return buffer;
}

struct Row {
  std::string before;
  std::string after;
};

void ExpectAll(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(row.after, Written(row.before)) << testing::PrintToString(row.before);
  }
}

}  // namespace

// --- A new file, a new section

TEST(WriteProfileString, NewFileHoldsTheHeaderAndTheEntryAlone) {
  EXPECT_EQ("[sec]\nkey=new\n", Rewrite("sec", "key", "new"));
}

TEST(WriteProfileString, MissingSectionIsAppendedAfterAnEmptyLine) {
  ExpectAll({
      {"", "\n[sec]\nkey=new\n"},
      {"\n", "\n\n[sec]\nkey=new\n"},
      {"[other]\nkey=old\n", "[other]\nkey=old\n\n[sec]\nkey=new\n"},
      {"[other]\nkey=old\n\n", "[other]\nkey=old\n\n\n[sec]\nkey=new\n"},
      {"key=old\n", "key=old\n\n[sec]\nkey=new\n"},
  });
}

TEST(WriteProfileString, HeaderThatIsNotTheWholeLineByteForByteIsNoHeader) {
  for (const std::string line :
       {"[SEC]",      "[Sec]",  "[sec] ",  "[sec]\t", "[sec] x", "[sec];",           "[sec]]",
        "[sec][sec]", " [sec]", "\t[sec]", "[ sec]",  "[sec ]",  "[sect]",           "[se]",
        "[sec",       "sec]",   "sec",     "[]",      ";[sec]",  "\xEF\xBB\xBF[sec]"}) {
    EXPECT_EQ(line + "\nkey=old\n\n[sec]\nkey=new\n", Written(line + "\nkey=old\n")) << line;
  }
}

// --- An entry in its section

TEST(WriteProfileString, KeyLineIsReplacedInItsPlace) {
  ExpectAll({
      {"[sec]\nkey=old\n", "[sec]\nkey=new\n"},
      {"[sec]\nkey\n", "[sec]\nkey=new\n"},
      {"[sec]\nkey: old ; why\n", "[sec]\nkey=new\n"},
      {"[sec]\nkey = old\n", "[sec]\nkey=new\n"},
      {"a\n\n[b]\nkey=1\n[sec]\nc=2\nkey=old\nd=3\n\n[e]\nkey=4\n",
       "a\n\n[b]\nkey=1\n[sec]\nc=2\nkey=new\nd=3\n\n[e]\nkey=4\n"},
  });
}

TEST(WriteProfileString, LongerKeyMatches) {
  ExpectAll({
      {"[sec]\nkeyboard=1\n", "[sec]\nkey=new\n"},
      {"[sec]\nkeyboard=1\nkey=old\n", "[sec]\nkey=new\nkey=old\n"},
  });
}

TEST(WriteProfileString, OnlyTheFirstKeyLineIsReplaced) {
  ExpectAll({
      {"[sec]\nkey=1\nkey=2\n", "[sec]\nkey=new\nkey=2\n"},
      {"[sec]\nkey=1\n\n[sec]\nkey=2\n", "[sec]\nkey=new\n\n[sec]\nkey=2\n"},
      {"[sec]\n\n[sec]\nkey=2\n", "[sec]\nkey=new\n\n[sec]\nkey=2\n"},
  });
}

TEST(WriteProfileString, LineThatDoesNotBeginWithTheKeyByteForByteIsKept) {
  for (const auto* line : {"KEY=old", "Key=old", " key=old", "\tkey=old", "xkey=old", "ke=old",
                           ";key=old", "#key=old", "[key]=old", "=key", " "}) {
    const auto before = "[sec]\n"s + line + "\n";
    EXPECT_EQ(before + "key=new\n", Written(before)) << line;
  }
}

TEST(WriteProfileString, MissingKeyGoesBeforeTheFirstEmptyLine) {
  ExpectAll({
      {"[sec]\na=1\n\n[other]\nkey=2\n", "[sec]\na=1\nkey=new\n\n[other]\nkey=2\n"},
      {"[sec]\n\n\n", "[sec]\nkey=new\n\n\n"},
      {"[sec]\na=1\n\nkey=old\n", "[sec]\na=1\nkey=new\n\nkey=old\n"},
      {"[sec]\r\na=1\r\n\r\nkey=old\r\n", "[sec]\na=1\nkey=new\n\nkey=old\n"},
      {"[sec]\na=1\n\r\r\r\nkey=old\n", "[sec]\na=1\nkey=new\n\nkey=old\n"},
  });
}

TEST(WriteProfileString, MissingKeyGoesToTheEndWhereThereIsNoEmptyLine) {
  ExpectAll({
      {"[sec]\n", "[sec]\nkey=new\n"},
      {"[sec]\na=1\nb=2\n", "[sec]\na=1\nb=2\nkey=new\n"},
  });
}

TEST(WriteProfileString, LaterHeaderDoesNotEndTheSection) {
  ExpectAll({
      {"[sec]\na=1\n[other]\nb=2\n", "[sec]\na=1\n[other]\nb=2\nkey=new\n"},
      {"[sec]\na=1\n[other]\nb=2\n\nc=3\n", "[sec]\na=1\n[other]\nb=2\nkey=new\n\nc=3\n"},
      {"[sec]\na=1\n[other]\nkey=2\n", "[sec]\na=1\n[other]\nkey=new\n"},
  });
}

TEST(WriteProfileString, EmptyLineBeforeTheSectionEndsNothing) {
  ExpectAll({{"\n\n[sec]\nkey=old\n", "\n\n[sec]\nkey=new\n"}});
}

TEST(WriteProfileString, EmptyKeyIsTheFirstLineOfTheSection) {
  const std::vector<Row> rows = {
      {"[sec]\n", "[sec]\n=new\n"},
      {"[sec]\na=1\nb=2\n", "[sec]\n=new\nb=2\n"},
      {"[sec]\n\na=1\n", "[sec]\n=new\n\na=1\n"},
      {"[sec]\n[other]\n", "[sec]\n=new\n"},
  };
  for (const Row& row : rows) {
    WriteFile(ProfilePath(), row.before);
    EXPECT_EQ(row.after, Rewrite("sec", "", "new")) << row.before;
  }
}

TEST(WriteProfileString, TextIsTakenLiterally) {
  WriteFile(ProfilePath(), "%s%n\n[%s%n]\n%d=%s\n%n\n");
  EXPECT_EQ("%s%n\n[%s%n]\n%d=%x%n\n%n\n", Rewrite("%s%n", "%d", "%x%n"));
  fs::remove(ProfilePath());
  EXPECT_EQ("[%s%n]\n%d=%x%n\n", Rewrite("%s%n", "%d", "%x%n"));
  fs::remove(ProfilePath());
  EXPECT_EQ("[]\n= a=b \r\nc\n", Rewrite("", "", " a=b \r\nc"));
}

TEST(WriteProfileString, NullValueIsStoredAsAnEmptyOne) {
  EXPECT_EQ("[sec]\nkey=\n", Rewrite("sec", "key", nullptr));
  WriteFile(ProfilePath(), "[sec]\nkey=old\nother=1\n");
  EXPECT_EQ("[sec]\nkey=\nother=1\n", Rewrite("sec", "key", nullptr));
  WriteFile(ProfilePath(), "");
  EXPECT_EQ("\n[sec]\nkey=\n", Rewrite("sec", "key", nullptr));
}

// --- What copying drops

TEST(WriteProfileString, CarriageReturnsAreDroppedWhereverTheyStand) {
  ExpectAll({
      {"a\r\n[sec]\r\nkey=old\r\nb\r\n", "a\n[sec]\nkey=new\nb\n"},
      {"\r[s\rec\r]\r\r\nb\r=\r1\nk\rey=old\n\rc\n", "[sec]\nb=1\nkey=new\nc\n"},
      {"a\rb\r\n\r\n", "ab\n\n\n[sec]\nkey=new\n"},
  });
}

TEST(WriteProfileString, LastLineWithoutLineFeedIsDropped) {
  ExpectAll({
      {"last", "\n[sec]\nkey=new\n"},
      {"a\nlast", "a\n\n[sec]\nkey=new\n"},
      {"a\n[sec]", "a\n\n[sec]\nkey=new\n"},
      {"[sec]\nlast", "[sec]\nkey=new\n"},
      {"[sec]\na\nkey=old", "[sec]\na\nkey=new\n"},
      {"[sec]\na\n\r", "[sec]\na\nkey=new\n"},
      {"[sec]\nkey=old\nlast", "[sec]\nkey=new\n"},
      {"[sec]\nkey=old\na\nlast\r", "[sec]\nkey=new\na\n"},
      {"[sec]\n\nlast", "[sec]\nkey=new\n\n"},
  });
}

TEST(WriteProfileString, LineIsCopiedUpToItsZeroByte) {
  ExpectAll({
      {"a\0b\n\0c\n"s, "a\n\n\n[sec]\nkey=new\n"},
      {"[sec]\0x\nkey=old\n"s, "[sec]\nkey=new\n"},
      {"[sec]\na\0b\nke\0y=1\nkey\0=1\nc\0d\n\0e\n"s, "[sec]\na\nke\nkey=new\nc\n\n"},
  });
}

TEST(WriteProfileString, LineThatBeginsWithAZeroByteCountsAsEmpty) {
  ExpectAll({
      {"[sec]\na\n\0key=1\nkey=2\n"s, "[sec]\na\nkey=new\n\nkey=2\n"},
      {"\0[sec]\nkey=1\n"s, "\nkey=1\n\n[sec]\nkey=new\n"},
  });
}

// --- Long lines

TEST(WriteProfileString, LineOf511CharactersIsCopiedWhole) {
  for (const std::size_t length : {509U, 510U, 511U}) {
    const std::string line = Times(length, 'x') + "\n";
    ExpectAll({
        {line + "a\n", line + "a\n\n[sec]\nkey=new\n"},
        {"[sec]\n" + line + "key=old\n", "[sec]\n" + line + "key=new\n"},
        {"[sec]\nkey=old\n" + line + "a\n", "[sec]\nkey=new\n" + line + "a\n"},
    });
  }
}

TEST(WriteProfileString, LongerLineCutsTheFileThere) {
  for (const std::size_t length : {512U, 513U, 514U, 1023U, 1024U, 100000U}) {
    const std::string line = Times(length, 'x') + "\n";
    ExpectAll({
        {line + "a\n", "\n[sec]\nkey=new\n"},
        {"a\n" + line + "[sec]\nkey=old\n", "a\n\n[sec]\nkey=new\n"},
        {"[sec]\n" + line + "key=old\n", "[sec]\nkey=new\n"},
        {"[sec]\na\n" + line + "\nb\n", "[sec]\na\nkey=new\n"},
        {"[sec]\na\nkey=" + line + "b\n", "[sec]\na\nkey=new\n"},
        {"[sec]\nkey=old\n" + line + "a\n", "[sec]\nkey=new\n"},
        {"[sec]\na\n\nb\n" + line + "c\n", "[sec]\na\nkey=new\n\nb\n"},
    });
  }
}

TEST(WriteProfileString, CarriageReturnsDoNotCountInALinesLength) {
  const std::string line = Times(511, 'x');
  ExpectAll({
      {line + "\r\na\n", line + "\na\n\n[sec]\nkey=new\n"},
      {"\r" + line + Times(600, '\r') + "\na\n", line + "\na\n\n[sec]\nkey=new\n"},
      {line + "\rx\na\n", "\n[sec]\nkey=new\n"},
  });
}

TEST(WriteProfileString, CharactersBehindAZeroByteCountInALinesLength) {
  const std::string line = "ab\0"s + Times(508, 'x');
  ExpectAll({
      {line + "\nc\n", "ab\nc\n\n[sec]\nkey=new\n"},
      {line + "x\nc\n", "\n[sec]\nkey=new\n"},
  });
}

TEST(WriteProfileString, LongLineWithoutLineFeedIsDroppedLikeAnyLastLine) {
  for (const std::size_t length : {511U, 512U, 513U}) {
    ExpectAll({{"[sec]\nkey=old\n" + Times(length, 'x'), "[sec]\nkey=new\n"}});
  }
}

TEST(WriteProfileString, ValueIsWrittenWholeHoweverLong) {
  const std::string value = Times(100000, 'v');
  EXPECT_EQ("[sec]\nkey=" + value + "\n", Rewrite("sec", "key", value.c_str()));
  EXPECT_EQ("[sec]\nkey=short\n", Rewrite("sec", "key", "short"));
  EXPECT_EQ("[sec]\nkey=" + value + "\n", Rewrite("sec", "key", value.c_str()));
}

TEST(WriteProfileString, KeyOf511CharactersIsTheLongestThatIsReplaced) {
  const std::string key = Times(511, 'k');
  WriteFile(ProfilePath(), "[sec]\n" + key + "\na\n");
  EXPECT_EQ("[sec]\n" + key + "=new\na\n", Rewrite("sec", key, "new"));
  WriteFile(ProfilePath(), "[sec]\n" + key + "\na\n");
  EXPECT_EQ("[sec]\n" + key + "\na\n" + key + "k=new\n", Rewrite("sec", key + "k", "new"));
}

// --- Arguments that are refused

TEST(WriteProfileString, SectionOf509CharactersIsFoundAndWritten) {
  const std::string section = Times(509, 's');
  const std::string header = "[" + section + "]\n";
  EXPECT_EQ(header + "key=new\n", Rewrite(section, "key", "new"));
  WriteFile(ProfilePath(), header + "a=1\nkey=old\n");
  EXPECT_EQ(header + "a=1\nkey=new\n", Rewrite(section, "key", "new"));
  WriteFile(ProfilePath(), "a=1\n");
  EXPECT_EQ("a=1\n\n" + header + "key=new\n", Rewrite(section, "key", "new"));
}

TEST(WriteProfileString, LongerSectionIsRefusedAndTheFileUntouched) {
  for (const bool exists : {false, true}) {
    if (exists) WriteFile(ProfilePath(), "[sec]\r\nkey=old");
    for (const std::size_t length : {510U, 511U, 512U, 100000U}) {
      const std::string section = Times(length, 's');
      EXPECT_EQ(0, WriteProfileString(section.c_str(), "key", "new", ProfilePath().c_str()));
    }
    EXPECT_EQ(exists, fs::exists(ProfilePath()));
    EXPECT_FALSE(fs::exists(TemporaryPath()));
  }
  EXPECT_EQ("[sec]\r\nkey=old", ReadFile(ProfilePath()));
}

TEST(WriteProfileString, NullArgumentIsRefusedAndTheFileUntouched) {
  for (const bool exists : {false, true}) {
    if (exists) WriteFile(ProfilePath(), "[sec]\r\nkey=old");
    for (unsigned given = 0; given < 7; ++given) {  // one bit each; 7 would be all
      EXPECT_EQ(0, WriteProfileString(given & 1 ? "sec" : nullptr, given & 2 ? "key" : nullptr,
                                      "new", given & 4 ? ProfilePath().c_str() : nullptr))
          << given;
    }
    EXPECT_EQ(exists, fs::exists(ProfilePath()));
    EXPECT_FALSE(fs::exists(TemporaryPath()));
  }
  EXPECT_EQ("[sec]\r\nkey=old", ReadFile(ProfilePath()));
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

// --- Where reader and writer disagree

TEST(ProfileFile, HeaderThatOnlyTheReaderKnowsHidesTheWrittenValue) {
  for (const std::string header : {"[SEC]", "[sec] x", "[sec];", "[Sec]key"}) {
    const std::string before = header + "\nkey=old\n";
    EXPECT_EQ(before + "\n[sec]\nkey=new\n", Written(before));
    EXPECT_EQ("old", ReadBack()) << header;
    EXPECT_EQ(before + "\n[sec]\nkey=again\n", Rewrite("sec", "key", "again"));
    EXPECT_EQ("old", ReadBack()) << header;
  }
}

TEST(ProfileFile, WrittenValueIsReachedThroughAHeaderThatOnlyTheReaderKnows) {
  EXPECT_EQ("[SEC]\na=1\n\n[sec]\nkey=new\n", Written("[SEC]\na=1\n"));
  EXPECT_EQ("new", ReadBack());
}

TEST(ProfileFile, HeaderThatOnlyTheWriterKnowsIsReadOnceItIsRewritten) {
  WriteFile(ProfilePath(), "[s\rec]\nkey=old\n");
  EXPECT_EQ("default", ReadBack());
  EXPECT_EQ("[sec]\nkey=new\n", Rewrite("sec", "key", "new"));
  EXPECT_EQ("new", ReadBack());
}

TEST(ProfileFile, KeyInAnotherCaseHidesTheWrittenValue) {
  EXPECT_EQ("[sec]\nKEY=old\nkey=new\n", Written("[sec]\nKEY=old\n"));
  EXPECT_EQ("old", ReadBack());
}

TEST(ProfileFile, LongerKeyIsReplacedAndReadBack) {
  WriteFile(ProfilePath(), "[sec]\nkeyboard=old\n");
  EXPECT_EQ("old", ReadBack());
  EXPECT_EQ("[sec]\nkey=new\n", Rewrite("sec", "key", "new"));
  EXPECT_EQ("new", ReadBack());
}

TEST(ProfileFile, KeyBehindAnEmptyLineIsReadButNotReplaced) {
  const std::string before = "[sec]\na=1\n\nkey=old\n";
  WriteFile(ProfilePath(), before);
  EXPECT_EQ("old", ReadBack());
  EXPECT_EQ("[sec]\na=1\nkey=new\n\nkey=old\n", Rewrite("sec", "key", "new"));
  EXPECT_EQ("new", ReadBack());
}

TEST(ProfileFile, EntryPlacedInALaterSectionIsReadBack) {
  EXPECT_EQ("[sec]\na=1\n[other]\nb=2\nkey=new\n\n", Written("[sec]\na=1\n[other]\nb=2\n\n"));
  EXPECT_EQ("new", ReadBack());
}

TEST(ProfileFile, ValueIsWrittenVerbatimAndReadTrimmed) {
  const struct {
    const char* value;
    const char* readBack;
  } rows[] = {
      {"plain", "plain"},
      {"", ""},
      {"  ", ""},
      {" \tv w\t ", "v w"},
      {"a=b", "b"},
      {"a=", ""},
      {"a = b = c", "c"},
      {"first\nsecond", "first"},
      {"\nnext line only", ""},
      {"v\r", "v"},
      {"v\rw", "v\rw"},
      {"; no comment", "; no comment"},
  };
  for (const auto& row : rows) {
    fs::remove(ProfilePath());
    EXPECT_EQ("[sec]\nkey="s + row.value + "\n", Rewrite("sec", "key", row.value));
    EXPECT_EQ(row.readBack, ReadBack()) << row.value;
  }
}

TEST(ProfileFile, LineOf511CharactersIsCopiedButReadInTwo) {
  const std::string long511 = "[sec]\nkey=" + Times(507, 'v') + "\n";
  WriteFile(ProfilePath(), long511);
  EXPECT_EQ(Times(506, 'v'), ReadBack());
  EXPECT_EQ(long511 + "a=1\n", Rewrite("sec", "a", "1"));
}

TEST(ProfileFile, TooLongAValueIsReadCutAndLostAtTheNextWriting) {
  Rewrite("sec", "key", Times(508, 'v').c_str());
  EXPECT_EQ(Times(506, 'v'), ReadBack());
  EXPECT_EQ("[sec]\na=1\n", Rewrite("sec", "a", "1"));
  EXPECT_EQ("default", ReadBack());
}

TEST(ProfileFile, SectionOf509CharactersIsWrittenButNeverRead) {
  const std::string section = Times(509, 's');
  Rewrite(section, "key", "new");
  char buffer[16] = {};
  EXPECT_EQ(0U, ReadProfileString(section.c_str(), "key", nullptr, buffer, sizeof buffer,
                                  ProfilePath().c_str()));
}

TEST(ProfileFile, LastLineWithoutLineFeedIsReadButLostAtTheNextWriting) {
  WriteFile(ProfilePath(), "[sec]\nother=1\nkey=old");
  EXPECT_EQ("old", ReadBack());
  EXPECT_EQ("[sec]\nother=2\n", Rewrite("sec", "other", "2"));
  EXPECT_EQ("default", ReadBack());
}
