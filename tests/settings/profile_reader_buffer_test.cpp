// What the reader makes of long lines and small buffers, and what it leaves behind.

#include "tests/settings/reading.h"
#include "tests/support/allocation.h"
#include "tests/support/open_files.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

// --- Long lines

TEST(ReadProfileString, LongLineIsSeenAsLinesOf510Characters) {
  for (const std::size_t length : {0U, 510U, 1020U, 5100U}) {
    const std::string pad = Times(length, 'x');
    EXPECT_EQ("value", Read(pad + "[sec]\nkey=value\n")) << length;
    EXPECT_EQ("value", Read("[sec]\n" + pad + "key=value\n")) << length;
  }
  for (const std::size_t length : {1U, 509U, 511U, 512U, 1019U, 1021U}) {
    const std::string pad = Times(length, 'x');
    EXPECT_EQ("default", Read(pad + "[sec]\nkey=value\n")) << length;
    EXPECT_EQ("default", Read("[sec]\n" + pad + "key=value\n")) << length;
  }
}

TEST(ReadProfileString, HeaderMayBePartOfALongLine) {
  EXPECT_EQ("value", Read("[sec]" + Times(505, 'x') + "key=value\n"));
  EXPECT_EQ("value", Read("[sec]" + Times(1000, 'x') + "\nkey=value\n"));
}

TEST(ReadProfileString, LineEndLeftByALineOf510CharactersIsALineOfItsOwn) {
  const std::string next = "=value\n";
  EXPECT_EQ("value", Read(Times(507, 's'), "", "[" + Times(507, 's') + "]\n" + next));
  EXPECT_EQ("default", Read(Times(508, 's'), "", "[" + Times(508, 's') + "]\n" + next));
}

TEST(ReadProfileString, ValueEndsWithThe510thCharacterOfItsLine) {
  const std::size_t room = 510 - "key="s.size();
  for (const std::size_t length : {room - 1, room, room + 1, room + 2, room + 600}) {
    EXPECT_EQ(Times(std::min(length, room), 'v'), Read("[sec]\nkey=" + Times(length, 'v') + "\n"))
        << length;
  }
}

TEST(ReadProfileString, EqualsBeyondThe510thCharacterIsNotSeen) {
  const std::size_t room = 510 - "key="s.size();
  EXPECT_EQ("v", Read("[sec]\nkey" + Times(room - 1, ' ') + "=v\n"));
  EXPECT_EQ("", Read("[sec]\nkey" + Times(room, ' ') + "=v\n"));
  EXPECT_EQ("default", Read("[sec]\nkey" + Times(room + 1, ' ') + "=v\n"));
  EXPECT_EQ("a", Read("[sec]\nkey=a" + Times(room, ' ') + "b=c\n"));  // cut, then trimmed
}

// --- The buffer

TEST(ReadProfileString, ValueIsCutToTheBufferAndPaddedWithZeros) {
  const struct {
    std::uint32_t size;
    Reading reading;
  } rows[] = {
      {1, {0, "\0####"s}},      {2, {1, "v\0####"s}},       {5, {4, "valu\0####"s}},
      {6, {5, "value\0####"s}}, {7, {5, "value\0\0####"s}}, {10, {5, "value\0\0\0\0\0####"s}},
  };
  const std::string path = Profile("[sec]\nkey=value\n");
  for (const auto& row : rows) EXPECT_EQ(row.reading, ReadInto(row.size, "d", path));
}

TEST(ReadProfileString, ValueIsTrimmedBeforeItIsCut) {
  EXPECT_EQ((Reading{2, "v \0####"s}), ReadInto(3, "d", Profile("[sec]\nkey=  v  w  \n")));
}

TEST(ReadProfileString, EmptyValueClearsTheWholeBuffer) {
  const std::string path = Profile("[sec]\nkey= \n");
  EXPECT_EQ((Reading{0, "\0####"s}), ReadInto(1, "d", path));
  EXPECT_EQ((Reading{0, "\0\0\0\0\0####"s}), ReadInto(5, "d", path));
}

TEST(ReadProfileString, DefaultIsPaddedWithZerosAndNotTerminatedWhereItFillsTheBuffer) {
  const struct {
    std::uint32_t size;
    Reading reading;
  } rows[] = {
      {1, {1, "d####"}},
      {6, {6, "defaul####"}},
      {7, {7, "default####"}},
      {8, {7, "default\0####"s}},
      {12, {7, "default\0\0\0\0\0####"s}},
  };
  for (const std::string& path :
       {TreePath("missing"), Profile("[sec]\nkey\n"), Profile("[sec]\n"), Profile("")}) {
    for (const auto& row : rows) EXPECT_EQ(row.reading, ReadInto(row.size, "default", path));
  }
}

TEST(ReadProfileString, DefaultIsNotTrimmed) {
  EXPECT_EQ((Reading{3, " d \0####"s}), ReadInto(4, " d ", TreePath("missing")));
}

TEST(ReadProfileString, NullOrEmptyDefaultLeavesTheBufferAsItWas) {
  for (const std::string& content : {""s, "[sec]\n"s, "[sec]\nkey\n"s, "[other]\nkey=value\n"s}) {
    const std::string path = Profile(content);
    EXPECT_EQ((Reading{0, "#########"}), ReadInto(5, nullptr, path)) << content;
    EXPECT_EQ((Reading{0, "#########"}), ReadInto(5, "", path)) << content;
  }
  EXPECT_EQ((Reading{0, "#########"}), ReadInto(5, nullptr, TreePath("missing")));
  EXPECT_EQ((Reading{0, "#########"}), ReadInto(5, "", TreePath("missing")));
}

TEST(ReadProfileString, BufferOfNoBytesGivesZeroAndIsUntouched) {
  EXPECT_EQ((Reading{0, "####"}), ReadInto(0, "default", Profile("[sec]\nkey=value\n")));
  EXPECT_EQ((Reading{0, "####"}), ReadInto(0, "default", TreePath("missing")));
}

TEST(ReadProfileString, NullArgumentGivesZeroAndTouchesNothing) {
  const std::string path = Profile("[sec]\nkey=value\n");
  for (const std::string& name : {path, TreePath("missing")}) {
    for (unsigned given = 0; given < 15; ++given) {  // one bit each; 15 would be all
      char buffer[] = "untouched";
      EXPECT_EQ(0U, ReadProfileString(given & 1 ? "sec" : nullptr, given & 2 ? "key" : nullptr,
                                      "default", given & 4 ? buffer : nullptr, sizeof buffer,
                                      given & 8 ? name.c_str() : nullptr))
          << given;
      EXPECT_STREQ("untouched", buffer) << given;
    }
  }
}

// --- What it leaves behind

TEST(ReadProfileString, ReadsTheFileAfreshAtEachCall) {
  EXPECT_EQ("first", Read("[sec]\nkey=first\n"));
  EXPECT_EQ("second", Read("[sec]\nkey=second\n"));
}

TEST(ReadProfileString, ClosesTheFileWhateverItFinds) {
  const auto before = CountOpenFiles();
  for (const auto* content : {"", "[sec]\n", "[sec]\nkey\n", "[sec]\nkey=\n", "[sec]\nkey=v\n"}) {
    Read(content);
    EXPECT_EQ(before, CountOpenFiles()) << content;
  }
  char buffer[8];
  ReadProfileString(Times(510, 's').c_str(), "key", "d", buffer, sizeof buffer,
                    Profile("[sec]\n").c_str());
  EXPECT_EQ(before, CountOpenFiles());
}

TEST(ReadProfileString, ChangesNothingOnDisk) {
  const std::string content = "[sec]\r\nkey=value\r\nlast";
  EXPECT_EQ("value", Read(content));
  EXPECT_EQ(content, ReadFile(TreePath("profile.ini")));
  EXPECT_FALSE(std::filesystem::exists(TreePath("profile.ini.tmp")));
  ReadInto(5, "d", TreePath("missing"));
  EXPECT_FALSE(std::filesystem::exists(TreePath("missing")));
}

TEST(ReadProfileString, WorksInItsFixedBuffersAlone) {
  const std::string path = Profile("[sec]\nkey=" + Times(1000, 'v') + "\n");
  char buffer[1024];
  const std::size_t before = AllocationsMade();
  const auto length = ReadProfileString("sec", "key", "d", buffer, sizeof buffer, path.c_str());
  EXPECT_EQ(before, AllocationsMade());
  EXPECT_EQ(506U, length);
}
