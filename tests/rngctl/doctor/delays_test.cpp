#include "tools/rngctl/doctor/start/delays.h"

#include <gtest/gtest.h>

namespace {

StartAnswer StartOf(double seconds, const std::vector<StartPart>& parts) {
  StartAnswer answer;
  answer.seconds = seconds;
  answer.parts = parts;
  return answer;
}

}  // namespace

TEST(DescribeSlowness, NamesWhatTakesLongAndTheLongestFirst) {
  const StartAnswer answer =
      StartOf(1.5, {{"", 0.01}, {"dsdr", 0.3}, {"sobol", 0.9}, {"accord", 0.1}});
  EXPECT_EQ(
      "Every program that starts the library waits 1.5 s: librngsobol.so takes 0.9 s, "
      "librngdsdr.so takes 0.3 s. Remove what you do not use, or ask its vendor for a faster "
      "version.",
      DescribeSlowness(answer));
}

TEST(DescribeSlowness, NamesTheLongestEvenIfItIsShort) {
  const StartAnswer answer = StartOf(0.6, {{"dsdr", 0.1}, {"", 0.14}});
  EXPECT_EQ(
      "Every program that starts the library waits 0.6 s: the search for the X display takes "
      "0.1 s. Remove what you do not use, or ask its vendor for a faster version.",
      DescribeSlowness(answer));
}

TEST(DescribeSlowness, IsEmptyForAStartThatIsQuickOrDidNotReturn) {
  EXPECT_EQ("", DescribeSlowness(StartOf(0.5, {{"dsdr", 0.4}})));
  StartAnswer answer = StartOf(3, {{"dsdr", 2.5}});
  answer.seconds.reset();
  EXPECT_EQ("", DescribeSlowness(answer));
}
