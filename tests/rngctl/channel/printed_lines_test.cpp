#include "tools/rngctl/channel/printed_lines.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> Texts(const PrintedLines& printed) {
  std::vector<std::string> texts;
  for (const PrintedLine& line : printed.Lines()) {
    texts.push_back(std::to_string(line.count) + " " + line.text);
  }
  return texts;
}

}  // namespace

TEST(PrintedLines, AreCountedInTheOrderOfTheirAppearance) {
  PrintedLines printed;
  printed.Add("one\ntwo\n\none\n");
  EXPECT_THAT(Texts(printed), ElementsAre("2 one", "1 two"));
}

TEST(PrintedLines, MayComeInPieces) {
  PrintedLines printed;
  for (const char* piece : {"o", "ne\r", "\ntw", "o"}) printed.Add(piece);
  EXPECT_THAT(Texts(printed), ElementsAre("1 one"));
  printed.Finish();
  EXPECT_THAT(Texts(printed), ElementsAre("1 one", "1 two"));
}

TEST(PrintedLines, AreCutWhereTheyAreLong) {
  PrintedLines printed;
  for (int i = 0; i < 1000; ++i) printed.Add(std::string(1000, 'x'));
  printed.Add("\nnext\n");
  EXPECT_THAT(Texts(printed), ElementsAre("1 " + std::string(200, 'x'), "1 next"));
}

TEST(PrintedLines, AreKeptUpToAHundred) {
  PrintedLines printed;
  EXPECT_THAT(Texts(printed), IsEmpty());
  for (int i = 0; i < 150; ++i) printed.Add(std::to_string(i) + "\n");
  printed.Add("7\n");
  EXPECT_EQ(100U, printed.Lines().size());
  EXPECT_EQ(50U, printed.CountOmitted());
  EXPECT_EQ(2U, printed.Lines()[7].count);
}

// As a long line is cut in the piece that ends it, too.
TEST(PrintedLines, AreCutWhereTheyEnd) {
  PrintedLines printed;
  printed.Add(std::string(201, 'x') + "\n" + std::string(200, 'y') + "\n");
  EXPECT_THAT(Texts(printed),
              ElementsAre("1 " + std::string(200, 'x'), "1 " + std::string(200, 'y')));
}
