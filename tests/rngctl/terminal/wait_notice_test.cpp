#include "tools/rngctl/terminal/wait_notice.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace {

// Standard error is a terminal while it lives.
class ErrorTerminal {
 public:
  ErrorTerminal() : before(::dup(STDERR_FILENO)) {
    int terminal = -1;
    if (::openpty(&reader, &terminal, nullptr, nullptr, nullptr) != 0) return;
    ::dup2(terminal, STDERR_FILENO);
    ::close(terminal);
  }
  ErrorTerminal(const ErrorTerminal&) = delete;
  ErrorTerminal& operator=(const ErrorTerminal&) = delete;
  ~ErrorTerminal() {
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    ::close(reader);
  }

  // Waits for what is printed until `end`.
  std::string ReadUntil(const std::string& end) const {
    std::string text;
    char c = 0;
    while (!text.ends_with(end) && ::read(reader, &c, 1) == 1) text += c;
    return text;
  }

 private:
  const int before;
  int reader = -1;
};

}  // namespace

TEST(WaitNotice, StandsBelowWhatIsPrintedMeanwhile) {
  const ErrorTerminal terminal;
  {
    WaitNotice notice("waiting");
    notice.PrintAbove("early");
    EXPECT_EQ("early\r\nwaiting", terminal.ReadUntil("waiting"));
    notice.PrintAbove("a question\nof two lines");
    EXPECT_EQ("\r\033[Ka question\r\nof two lines\r\nwaiting", terminal.ReadUntil("waiting"));
  }
  EXPECT_EQ("\r\033[K", terminal.ReadUntil("K"));
}

TEST(WaitNotice, IsNotShownForAMoment) {
  const ErrorTerminal terminal;
  {
    const WaitNotice notice("waiting");
    ::usleep(100'000);
  }
  std::fputs("end", stderr);
  EXPECT_EQ("end", terminal.ReadUntil("end"));
}

TEST(WaitNotice, IsNotShownElsewhereThanOnATerminal) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  const int before = ::dup(STDERR_FILENO);
  ::dup2(ends[1], STDERR_FILENO);
  {
    WaitNotice notice("waiting");
    ::usleep(1'200'000);
    notice.PrintAbove("a question");
  }
  ::dup2(before, STDERR_FILENO);
  for (const int descriptor : {before, ends[1]}) ::close(descriptor);
  char printed[100] = "";
  EXPECT_LT(0, ::read(ends[0], printed, sizeof printed - 1));
  EXPECT_STREQ("a question\n", printed);
  ::close(ends[0]);
}
