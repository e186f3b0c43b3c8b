#include "tests/settings/profile.h"

#include <gtest/gtest.h>
#include <vector>

using namespace std::string_literals;

namespace fs = std::filesystem;

namespace {

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

TEST(WriteProfileString, NoLineIsAComment) {
  for (const std::string mark : {";", "#", "//", "'", "!"}) {
    WriteFile(ProfilePath(), "[sec]\n" + mark + "key=old\nkey=1\n");
    EXPECT_EQ("[sec]\n" + mark + "key=new\nkey=1\n", Rewrite("sec", mark + "key", "new")) << mark;
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
