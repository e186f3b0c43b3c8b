#include "tests/settings/reading.h"
#include "tests/support/permissions.h"
#include "tests/support/process.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

using namespace std::string_literals;

// --- What is found

struct Found {
  std::string content;
  std::string value;
};

void ExpectAll(const std::vector<Found>& rows) {
  for (const Found& row : rows) {
    EXPECT_EQ(row.value, Read(row.content)) << testing::PrintToString(row.content);
  }
}

TEST(ReadProfileString, FindsTheKeyInItsSection) {
  ExpectAll({
      {"[sec]\nkey=value\n", "value"},
      {"[sec]\nkey=value", "value"},
      {"[sec]\r\nkey=value\r\n", "value"},
      {"\n\n[other]\nother=1\n\n[sec]\nother=2\nkey=value\n", "value"},
      {"key=before\n[sec]\nkey=value\n", "value"},
      {"[sec]\nkey=value\nkey=second\n", "value"},
      {"[sec]\nkey=value\n[sec]\nkey=second\n", "value"},
      {"[sec]\n;key=no\n#key=no\n key=no\n\tkey=no\nxkey=no\nke=no\nkey=value\n", "value"},
  });
}

TEST(ReadProfileString, HeaderMatchesInAnyCase) {
  ExpectAll({{"[SEC]\nkey=value\n", "value"}, {"[sEc]\nkey=value\n", "value"}});
}

TEST(ReadProfileString, TextAfterTheHeaderIsIgnored) {
  ExpectAll({
      {"[sec] and more\nkey=value\n", "value"},
      {"[SEC]x\nkey=value\n", "value"},
      {"[sec]]\nkey=value\n", "value"},
      {"[sec][other]\nkey=value\n", "value"},
      {"[sec]key=no\nkey=value\n", "value"},
      {"[sec]\0junk\nkey=value\n"s, "value"},
  });
}

TEST(ReadProfileString, KeyMatchesInAnyCase) {
  ExpectAll({{"[sec]\nKEY=value\n", "value"}, {"[sec]\nKey=value\nkey=second\n", "value"}});
}

TEST(ReadProfileString, LongerKeyMatches) {
  ExpectAll({
      {"[sec]\nkeyboard=value\n", "value"},
      {"[sec]\nKEYBOARD=value\nkey=second\n", "value"},
  });
}

TEST(ReadProfileString, WhatStandsBetweenKeyAndLastEqualsIsIgnored) {
  ExpectAll({
      {"[sec]\nkey =value\n", "value"},
      {"[sec]\nkey \t junk = value\n", "value"},
      {"[sec]\nkey=a=b=value\n", "value"},
      {"[sec]\nkey==value\n", "value"},
      {"[sec]\nkey[x]=\r=value\n", "value"},
  });
}

TEST(ReadProfileString, SearchRunsOnThroughLaterSections) {
  ExpectAll({
      {"[sec]\nother=1\n[later]\nkey=value\n", "value"},
      {"[sec]\nother=1\n\n\n[later]\n\nkey=value\n", "value"},
      {"[SEC] x\nother=1\n\n[sec]\nkey=value\n", "value"},
  });
}

TEST(ReadProfileString, ValueIsTrimmedAtBothEndsOnly) {
  ExpectAll({
      {"[sec]\nkey= \t\v\f\rv  \t\rw \t\v\f\r\n", "v  \t\rw"},
      {"[sec]\nkey= v", "v"},
      {"[sec]\nkey=v \n", "v"},
  });
}

TEST(ReadProfileString, NothingInAValueIsSpecial) {
  ExpectAll({
      {"[sec]\nkey=\"quoted\"\n", "\"quoted\""},
      {"[sec]\nkey=v ; w # x\n", "v ; w # x"},
      {"[sec]\nkey=\\n\\\n", "\\n\\"},
      {"[sec]\nkey=[sec]\n", "[sec]"},
      {"[sec]\nkey=%s%n\n", "%s%n"},
      {"[sec]\nkey=\b\x1F\x7F\n", "\b\x1F\x7F"},
  });
}

TEST(ReadProfileString, BytesAboveTheAsciiOnesAreNoWhitespace) {
  ExpectAll({
      {"[sec]\nkey=\xA0v\xA0\n", "\xA0v\xA0"},
      {"[sec]\nkey=\x85\n", "\x85"},
      {"[sec]\nkey=\xFF \n", "\xFF"},
  });
}

TEST(ReadProfileString, ValueEndsAtAZeroByte) {
  ExpectAll({
      {"[sec]\nkey=v\0w\n"s, "v"},
      {"[sec]\nkey=v \0=w\n"s, "v"},
  });
}

// --- What is not found

TEST(ReadProfileString, MissingSectionGivesTheDefault) {
  for (const auto& content : {
           ""s,
           "\n"s,
           "key=value\n"s,
           "sec\nkey=value\n"s,
           "[sec\nkey=value\n"s,
           "sec]\nkey=value\n"s,
           "(sec)\nkey=value\n"s,
           "[other]\nkey=value\n"s,
           "[sect]\nkey=value\n"s,
           "[se]\nkey=value\n"s,
           "[ sec]\nkey=value\n"s,
           "[sec ]\nkey=value\n"s,
           " [sec]\nkey=value\n"s,
           "\t[sec]\nkey=value\n"s,
           "\r[sec]\nkey=value\n"s,
           "x[sec]\nkey=value\n"s,
           ";[sec]\nkey=value\n"s,
           "[other][sec]\nkey=value\n"s,
           "[se\rc]\nkey=value\n"s,
           "[se\nc]\nkey=value\n"s,
           "[se\0c]\nkey=value\n"s,
           "\0[sec]\nkey=value\n"s,
           "\xEF\xBB\xBF[sec]\nkey=value\n"s,
           "other\r[sec]\rkey=value\r"s,
       }) {
    EXPECT_EQ("default", Read(content)) << testing::PrintToString(content);
  }
}

TEST(ReadProfileString, MissingKeyGivesTheDefault) {
  for (const auto& content : {
           "[sec]"s,
           "[sec]\n"s,
           "[sec]\n\n\n"s,
           "[sec]\nother=value\n"s,
           "key=value\n[sec]\n"s,
           "[other]\nkey=value\n[sec]\n"s,
           "[sec]key=value\n"s,
           "[sec] key=value\n"s,
           "[sec]\n key=value\n"s,
           "[sec]\n\tkey=value\n"s,
           "[sec]\n\rkey=value\n"s,
           "[sec]\nxkey=value\n"s,
           "[sec]\nke=value\n"s,
           "[sec]\nke y=value\n"s,
           "[sec]\nke\ry=value\n"s,
           "[sec]\nke\ny=value\n"s,
           "[sec]\nke\0y=value\n"s,
           "[sec]\n\0key=value\n"s,
           "[sec]\n;key=value\n"s,
           "[sec]\n#key=value\n"s,
           "[sec]\n\"key\"=value\n"s,
           "[sec]\n[key]=value\n"s,
           "[sec]\nother=key=value\n"s,
           "[sec]\rkey=value\r"s,
       }) {
    EXPECT_EQ("default", Read(content)) << testing::PrintToString(content);
  }
}

TEST(ReadProfileString, FirstKeyLineWithoutEqualsGivesTheDefault) {
  for (const auto& content : {
           "[sec]\nkey"s,
           "[sec]\nkey\n"s,
           "[sec]\nkey: value\n"s,
           "[sec]\nkey\n=value\n"s,
           "[sec]\nkey\0=value\n"s,
           "[sec]\nkey\nkey=value\n"s,
           "[sec]\nkeyboard\nkey=value\n"s,
           "[sec]\nKEY\nkey=value\n"s,
       }) {
    EXPECT_EQ("default", Read(content)) << testing::PrintToString(content);
  }
}

TEST(ReadProfileString, EmptyOrBlankValueIsEmptyAndNotTheDefault) {
  for (const auto& content : {
           "[sec]\nkey="s,
           "[sec]\nkey=\n"s,
           "[sec]\nkey=\r\n"s,
           "[sec]\nkey= \t\v\f\r \n"s,
           "[sec]\nkey=a=\n"s,
           "[sec]\nkey=a= \n"s,
           "[sec]\nkey=\0value\n"s,
           "[sec]\nkey= \0value\n"s,
           "[sec]\nkey=\nkey=value\n"s,
           "[sec]\nkeyboard=\nkey=value\n"s,
       }) {
    EXPECT_EQ("", Read(content)) << testing::PrintToString(content);
  }
}

TEST(ReadProfileString, FileThatCannotBeReadGivesTheDefault) {
  WriteFile(TreePath("file"), "[sec]\nkey=value\n");
  for (const std::string& path :
       {""s, TreePath("missing"), TreePath("missing/file"), TreePath("file/below"), TreePath("")}) {
    EXPECT_EQ((Reading{2, "d2\0\0\0####"s}), ReadInto(5, "d2", path)) << path;
  }
}

TEST(ReadProfileString, FileThatMustNotBeReadGivesTheDefault) {
  const std::string path = Profile("[sec]\nkey=value\n");
  std::filesystem::permissions(path, std::filesystem::perms(0222));
  const Unprivileged unprivileged;
  EXPECT_EQ((Reading{2, "d2\0\0\0####"s}), ReadInto(5, "d2", path));
}

// --- Section and key as given

TEST(ReadProfileString, SectionAndKeyAreTakenLiterally) {
  EXPECT_EQ("value", Read("%s%n", "%d", "[%s%n]\n%d=value\n"));
  EXPECT_EQ("value", Read("a]b", "a b", "[a]\na b=no\n[a]b]\na b=value\n"));
  EXPECT_EQ("value", Read("[s]", "[k]", "[[s]]\n[k]=value\n"));
  EXPECT_EQ("value", Read(" ", " ", "[ ]\n =value\n"));
  EXPECT_EQ("value", Read("", "key", "[]\nkey=value\n"));
  EXPECT_EQ("default", Read(".*", "key", "[sec]\nkey=value\n"));
}

TEST(ReadProfileString, NoLineIsAComment) {
  for (const std::string mark : {";", "#", "//", "'", "!"}) {
    EXPECT_EQ("value", Read("sec", mark + "x", "[sec]\n" + mark + "x=value\n")) << mark;
    EXPECT_EQ("value", Read("sec", mark, "[sec]\n" + mark + " remark = value\n")) << mark;
  }
}

// The library sets no locale; a host may.
TEST(ReadProfileString, WhitespaceIsThatOfTheLocale) {
  std::string characters = "CHARMAP\n";
  for (int c = 0; c < 256; ++c) {
    char line[32];
    std::snprintf(line, sizeof line, "<U%04X> /x%02x\n", c, c);
    characters += line;
  }
  WriteFile(TreePath("map"), "<code_set_name> X\n<escape_char> /\n" + characters + "END CHARMAP\n");
  WriteFile(TreePath("source"),
            "LC_CTYPE\nspace <U0009>;<U000A>;<U0020>;<U007E>;<U00A0>\nEND LC_CTYPE\n");
  // It complains about the categories that are missing.
  RunShell("localedef -c --no-archive -f " + TreePath("map") + " -i " + TreePath("source") + " " +
           TreePath("odd"));
  ASSERT_EQ(0, ::setenv("LOCPATH", TreePath("").c_str(), 1));
  const std::string content = "[sec]\nkey= ~\xA0v~w\xA0~\r\n";
  EXPECT_EQ("~\xA0v~w\xA0~", Read(content));
  ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, "odd"));
  EXPECT_EQ("v~w\xA0~\r", Read(content));  // a carriage return is none there
  EXPECT_EQ("v~w", Read("[sec]\nkey= ~\xA0v~w\xA0~\n"));
}

TEST(ReadProfileString, KeyMayReachOverTheEquals) {
  EXPECT_EQ("value", Read("sec", "key=v", "[sec]\nkey=no\nkey=value\n"));
}

TEST(ReadProfileString, EmptyKeyIsTheFirstLineAfterTheHeader) {
  EXPECT_EQ("value", Read("sec", "", "[sec]\nother=value\nkey=no\n"));
  EXPECT_EQ("value", Read("sec", "", "[sec] x=no\n=value\n"));
  EXPECT_EQ("default", Read("sec", "", "[sec]\n\nkey=value\n"));
  EXPECT_EQ("default", Read("sec", "", "[sec]\nother\nkey=value\n"));
  EXPECT_EQ("default", Read("sec", "", "[sec]\n\0=value\n"s));
  EXPECT_EQ("default", Read("sec", "", "[sec]\n"));
}

TEST(ReadProfileString, SectionOf508CharactersIsTheLongestThatIsFound) {
  for (const std::size_t length : {507U, 508U}) {
    const std::string section = Times(length, 's');
    EXPECT_EQ("value", Read(section, "key", "[" + section + "]\nkey=value\n")) << length;
    EXPECT_EQ("default", Read(section + "t", "key", "[" + section + "]\nkey=value\n")) << length;
  }
  // Its header has 511 characters, one more than a read takes.
  const std::string section = Times(509, 's');
  EXPECT_EQ("default", Read(section, "key", "[" + section + "]\nkey=value\n"));
}

TEST(ReadProfileString, SectionOver509CharactersGivesZeroWithoutTheDefault) {
  for (const std::size_t length : {510U, 511U, 512U, 100000U}) {
    const std::string section = Times(length, 's');
    for (const std::string& path : {Profile("[" + section + "]\nkey=value\n"), TreePath("")}) {
      char buffer[] = "untouched";
      EXPECT_EQ(0U, ReadProfileString(section.c_str(), "key", "default", buffer, sizeof buffer,
                                      path.c_str()))
          << length;
      EXPECT_STREQ("untouched", buffer) << length;
    }
  }
}

TEST(ReadProfileString, SectionOver509CharactersGivesTheDefaultWhereTheFileIsMissing) {
  for (const std::size_t length : {509U, 510U, 100000U}) {
    char buffer[] = "########";
    EXPECT_EQ(7U, ReadProfileString(Times(length, 's').c_str(), "key", "default", buffer,
                                    sizeof buffer, TreePath("missing").c_str()))
        << length;
    EXPECT_STREQ("default", buffer) << length;
  }
}

TEST(ReadProfileString, KeyOver510CharactersIsNeverFound) {
  const std::string key = Times(509, 'k');
  EXPECT_EQ("", Read("sec", key, "[sec]\n" + key + "=\n"));
  EXPECT_EQ("default", Read("sec", key + "k", "[sec]\n" + key + "k=value\n"));  // no "=" in reach
  EXPECT_EQ("default", Read("sec", key + "k=", "[sec]\n" + key + "k=value\n"));
}
