// Draws from "biokbd" on a terminal: what the user does.

#include "tests/interactive/tty/terminal_draw.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST_F(TerminalDraw, SucceedsAfterEnoughKeys) {
  ASSERT_TRUE(terminal.Shows(kPrompt));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  EXPECT_GE(robot.Presses(), 161);
  EXPECT_LE(robot.Presses(), 400);
  // A user who never stops typing does not hold up the draw.
  std::atomic<bool> hasEnded = false;
  std::thread typing([&] {
    while (!hasEnded) robot.Press();
  });
  EXPECT_EQ("ready\ndrawn\ndescriptors 0\nchildren 0\n", host.Finish());
  hasEnded = true;
  typing.join();
  ExpectNothingLeft();
}

TEST_F(TerminalDraw, GetsEveryKeyAsItIs) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const termios now = terminal.Settings();
  EXPECT_EQ(0U, now.c_lflag & (ECHO | ICANON | ISIG | IEXTEN));
  EXPECT_EQ(0U, now.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR));
}

// The same key twice, and then a paste, which ends the row.
TEST_F(TerminalDraw, SaysThatKeysAreTooRegular) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (int i = 0; i < 100 && terminal.Screen().find("stop typing") == std::string::npos; ++i) {
    robot.PressKey("a");
    robot.PressKey("a");
    terminal.Press("xy");
  }
  ASSERT_TRUE(terminal.Shows("stop typing"));
  for (int i = 0; i < 20; ++i) robot.Press();
  EXPECT_TRUE(terminal.Shows("too regular to be random."));
  ExpectNoBytes();
  EXPECT_EQ(0, terminal.CountUnreadKeys());
}

// The keys are also those that end the draw: nothing of what is typed may appear on the screen.
TEST_F(TerminalDraw, ShowsNoKeys) {
  ASSERT_TRUE(terminal.Shows(kPrompt));
  for (int i = 0; i < 20; ++i) {
    robot.PressKey("q");
    robot.PressKey("z");
  }
  EXPECT_TRUE(terminal.Shows("%"));
  const std::string after = terminal.Screen().substr(terminal.Screen().find(kPrompt));
  EXPECT_THAT(after, Not(HasSubstr("q")));
  EXPECT_THAT(after, Not(HasSubstr("z")));
}

TEST_F(TerminalDraw, SwallowsWhatIsTypedAfterEnough) {
  ASSERT_TRUE(terminal.Shows(kPrompt));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  for (int i = 0; i < 20; ++i) robot.Press();
  EXPECT_THAT(host.Finish(), HasSubstr("\ndrawn\n"));
  EXPECT_EQ(0, terminal.CountUnreadKeys());
}

TEST_F(TerminalDraw, IsCancelledByControlC) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  ExpectNoBytes();
  // In place of the bar, which has 25 characters.
  EXPECT_TRUE(terminal.Shows('\r' + std::string(25, ' ') + std::string(25, '\b') + "Cancelled"));
}

// A computer that is busy delivers several keys at once.
TEST_F(TerminalDraw, IsCancelledByControlCAmongOtherKeys) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press(
      "ab\x03"
      "cd");
  ExpectNoBytes();
}

TEST_F(TerminalDraw, IsCancelledByControlD) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x04");
  ExpectNoBytes();
}

TEST_F(TerminalDraw, GivesPastedTextNoCredit) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (int i = 0; i < 100; ++i) {
    terminal.Press("The quick brown fox jumps over the lazy dog. ");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ExpectProgressBelow(20);
  terminal.Press("\x03");
  ExpectNoBytes();
}

// As a terminal repeats it. All but the second press go without credit.
TEST_F(TerminalDraw, GivesAHeldKeyNoCredit) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (int i = 0; i < 200; ++i) {
    terminal.Press("a");
    std::this_thread::sleep_for(std::chrono::milliseconds(15 + i * 7 % 11));
  }
  ExpectProgressBelow(2);
  terminal.Press("\x03");
  ExpectNoBytes();
}

// Every 20 ms another key. Only where this machine is late does a press look like a person's. A person would have
// finished after 250 of them; "./dev soak" makes 1,000.
TEST_F(TerminalDraw, GivesAMetronomeHardlyAnyCredit) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const char* const presses = std::getenv("RNG_PRESSES");
  auto next = std::chrono::steady_clock::now();
  for (int i = 0; i < (presses ? std::atoi(presses) : 250); ++i) {
    next += std::chrono::milliseconds(20);
    std::this_thread::sleep_until(next);
    terminal.Press(std::string(1, static_cast<char>('a' + i * 7 % 26)));
  }
  EXPECT_THAT(terminal.Screen(), Not(HasSubstr(kEnough)));
  terminal.Press("\x03");
  ExpectNoBytes();
}

// Cyrillic letters have two bytes each in UTF-8.
TEST_F(TerminalDraw, TakesAnyScript) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const std::vector<std::string> letters = {"ж", "д", "ы", "щ", "ф", "ю"};
  for (std::size_t i = 0; i < 60; ++i) {
    robot.PressKey(letters[i * i % letters.size()]);
  }
  EXPECT_TRUE(terminal.Shows("10%"));
}

TEST_F(TerminalDraw, SaysInANarrowWindowHowFarItIs) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Resize(24, 20);
  EXPECT_TRUE(robot.TypeUntil("\r[###         ] 25%"));
  EXPECT_TRUE(robot.TypeUntil("\rThat is enough. Ple"));
  EXPECT_EQ("ready\ndrawn\ndescriptors 0\nchildren 0\n", host.Finish());
  // In the last column, the cursor would go to the next line.
  EXPECT_THAT(terminal.Screen(), Not(HasSubstr("Plea")));
  ExpectNothingLeft();
}

TEST_F(TerminalDraw, HasNoBarWhereThereIsNoRoomForIt) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Resize(24, 8);
  EXPECT_TRUE(robot.TypeUntil("\r1%"));
  terminal.Press("\x03");
  ExpectNoBytes();
}

TEST_F(TerminalDraw, SaysInANarrowWindowHowItEnds) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Resize(24, 20);
  terminal.Press("\x03");
  EXPECT_TRUE(terminal.Shows("Cancelled. No random bytes were generated.\r\r\n"));  // with ONLCR
  ExpectNoBytes();
}

// As on a serial line.
TEST_F(TerminalDraw, ShowsTheBarWhereTheWidthIsUnknown) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Resize(0, 0);
  EXPECT_TRUE(robot.TypeUntil("\r[#                   ] 5%"));
  terminal.Press("\x03");
  ExpectNoBytes();
}

// The last column stays free, so that no terminal starts a new line. Of "10%" there is the first digit.
TEST_F(TerminalDraw, ShowsWhatFitsOnTheScreen) {
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Resize(10, 2);
  EXPECT_TRUE(robot.TypeUntil("\r8\r9\r1\r1"));
  terminal.Press("\x03");
  ExpectNoBytes();
}

TEST_F(TerminalDraw, SurvivesResizing) {
  ASSERT_TRUE(terminal.Shows("0%"));
  for (const unsigned short columns : std::vector<unsigned short>{20, 1, 0, 300}) {
    terminal.Resize(10, columns);
    robot.Press();
  }
  EXPECT_TRUE(robot.TypeUntil("5%"));
  terminal.Press("\x03");
  ExpectNoBytes();
}

namespace {

class RemoteDraw : public TerminalDraw {
 protected:
  RemoteDraw() : TerminalDraw({DRAWING_HOST, "biokbd", "32"}, {"SSH_TTY=/dev/pts/0"}) {}
};

// As in a container.
class DrawOfProcessOne : public TerminalDraw {
 protected:
  DrawOfProcessOne()
      : TerminalDraw({"/usr/bin/unshare", "--pid", "--fork", DRAWING_HOST, "biokbd", "32"}) {}
};

// Its keys would arrive three at a time.
class DrawAfterOddSettings : public TerminalDraw {
 protected:
  DrawAfterOddSettings()
      : TerminalDraw({"/bin/sh", "-c", "stty min 3; exec " DRAWING_HOST " biokbd 32"}) {}
};

class DrawWithoutStandardInput : public TerminalDraw {
 protected:
  DrawWithoutStandardInput()
      : TerminalDraw({"/bin/sh", "-c", "exec " DRAWING_HOST " biokbd 32 <&-"}) {}
};

class ThreeDraws : public TerminalDraw {
 protected:
  ThreeDraws() : TerminalDraw({DRAWING_HOST, "biokbd", "32", "3"}) {}
};

}  // namespace

TEST_F(DrawWithoutStandardInput, AsksOnTheTerminal) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const std::string descriptors = "/proc/" + std::to_string(host.Get()) + "/fd";
  for (const auto& descriptor : std::filesystem::directory_iterator(descriptors)) {
    EXPECT_NE("/dev/tty", std::filesystem::read_symlink(descriptor)) << descriptor;
  }
  terminal.Press("\x03");
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
}

TEST_F(RemoteDraw, TakesTwiceAsManyKeys) {
  ASSERT_TRUE(terminal.Shows("twice as many keys"));
  for (int i = 0; i < 165; ++i) robot.Press();
  EXPECT_TRUE(terminal.Shows("30%"));
  EXPECT_THAT(terminal.Screen(), Not(HasSubstr("55%")));
}

TEST_F(DrawOfProcessOne, IsCancelled) {
  if (std::system("unshare --pid --fork true") != 0) {
    GTEST_SKIP() << "this machine permits no namespaces";
  }
  ASSERT_TRUE(terminal.Shows("0%"));
  terminal.Press("\x03");
  // It reads /proc of the other namespace, so what it counts there means nothing.
  EXPECT_THAT(host.Finish(), StartsWith("ready\nzeros\n"));
  ExpectNothingLeft();
}

TEST_F(DrawAfterOddSettings, GetsEveryKeyAtOnce) {
  ASSERT_TRUE(terminal.Shows("0%"));
  const termios now = terminal.Settings();
  EXPECT_EQ(1, now.c_cc[VMIN]);
  EXPECT_EQ(0, now.c_cc[VTIME]);
  terminal.Press("\x03");
  EXPECT_EQ("ready\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
  EXPECT_EQ(3, terminal.Settings().c_cc[VMIN]);
}

TEST_F(ThreeDraws, TakeTurns) {
  ASSERT_TRUE(terminal.Shows("0%"));
  ASSERT_TRUE(robot.TypeUntil(kEnough));
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(terminal.Shows(kPrompt));
    ASSERT_TRUE(terminal.Shows("0%"));
    terminal.Press("\x03");
  }
  const std::string output = host.Finish();
  EXPECT_THAT(output, HasSubstr("drawn"));
  EXPECT_THAT(output, HasSubstr("zeros"));
  EXPECT_THAT(output, HasSubstr("descriptors 0\nchildren 0\n"));
  ExpectNothingLeft();
}

TEST_F(ThreeDraws, AreAllCancelledAtOnce) {
  ASSERT_TRUE(terminal.Shows("0%"));
  // On a busy machine, a thread may begin to draw after the first Cancel.
  for (int i = 0; i < 10; ++i) {
    host.Send(SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ("ready\nzeros\nzeros\nzeros\ndescriptors 0\nchildren 0\n", host.Finish());
  ExpectNothingLeft();
}
