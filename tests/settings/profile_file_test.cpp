// Where reader and writer disagree.

#include "tests/settings/profile.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace fs = std::filesystem;

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
