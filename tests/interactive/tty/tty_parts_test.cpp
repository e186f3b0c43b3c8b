// The parts of the terminal front end that need no terminal.

#include "helpers/tty/keys.h"
#include "helpers/tty/network.h"
#include "tests/support/open_files.h"
#include "tests/support/tree.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <utmpx.h>

namespace {

// Each press as its key, with "+" if it did not arrive alone.
std::string Keys(const std::string& bytes) {
  std::string text;
  for (const KeyPress& press : SplitKeys(bytes, std::chrono::seconds(5))) {
    text += (text.empty() ? "" : " ") + std::to_string(press.key) + (press.isAlone ? "" : "+");
    EXPECT_EQ(std::chrono::seconds(5), press.time);
  }
  return text;
}

constexpr const char* kVariables[] = {"SSH_CONNECTION", "SSH_CLIENT", "SSH_TTY", "TMUX", "STY"};

class Network : public testing::Test {
 protected:
  Network() {
    for (const char* const name : kVariables) ::unsetenv(name);
    ::unsetenv("TERM");
    WriteFile(TreePath("utmp"), "");
    ::utmpxname(TreePath("utmp").c_str());
  }

  static void AddLogin(const std::string& terminal, const std::string& host) {
    utmpx record = {};
    record.ut_type = USER_PROCESS;
    record.ut_pid = 1;
    std::memcpy(record.ut_line, terminal.data(), terminal.size());
    std::memcpy(record.ut_id, terminal.data() + terminal.size() - 3, 3);
    std::memcpy(record.ut_host, host.data(), host.size());
    ::setutxent();
    EXPECT_NE(nullptr, ::pututxline(&record));
    ::endutxent();
  }
};

}  // namespace

TEST(Keys, ASingleCharacterIsOnePress) {
  EXPECT_EQ("", Keys(""));
  EXPECT_EQ("97", Keys("a"));
  EXPECT_EQ("1078", Keys("\xD0\xB6"));
  EXPECT_EQ("8364", Keys("\xE2\x82\xAC"));
  EXPECT_EQ("128512", Keys("\xF0\x9F\x98\x80"));
}

TEST(Keys, WhatComesTogetherIsNotAlone) {
  EXPECT_EQ("97+ 98+", Keys("ab"));
  EXPECT_EQ("27+ 91+ 65+", Keys("\033[A"));
  EXPECT_EQ("208+ 182+ 97+", Keys("\xD0\xB6"
                                  "a"));
  EXPECT_EQ("208+ 182+ 208+ 182+", Keys("\xD0\xB6\xD0\xB6"));
}

TEST(Keys, BytesThatAreNotUtf8AreNoCharacter) {
  EXPECT_EQ("208", Keys("\xD0"));
  EXPECT_EQ("128", Keys("\x80"));
  EXPECT_EQ("128+ 182+", Keys("\x80\xB6"));
  EXPECT_EQ("208+ 97+", Keys("\xD0"
                             "a"));
}

TEST_F(Network, IsNotAssumedForALocalLogin) {
  AddLogin("pts/7", "");
  AddLogin("tty2", ":0");
  EXPECT_FALSE(MayBeRemote("pts/7"));
  EXPECT_FALSE(MayBeRemote("tty2"));
  EXPECT_FALSE(MayBeRemote("pts/8"));
  EXPECT_FALSE(MayBeRemote(""));
  EXPECT_FALSE(MayBeRemote(std::string(100, 'x')));
}

TEST_F(Network, IsSeenInTheLoginRecord) {
  AddLogin("pts/7", "192.0.2.1");
  AddLogin("pts/9", "example.org");
  EXPECT_TRUE(MayBeRemote("pts/7"));
  EXPECT_TRUE(MayBeRemote("pts/9"));
  EXPECT_FALSE(MayBeRemote("pts/8"));
}

TEST_F(Network, LeavesTheLoginRecordsClosed) {
  AddLogin("pts/7", "192.0.2.1");
  const auto before = CountOpenFiles();
  EXPECT_TRUE(MayBeRemote("pts/7"));
  EXPECT_EQ(before, CountOpenFiles());
}

TEST_F(Network, IsSeenInVariables) {
  for (const char* const name : kVariables) {
    ::setenv(name, "", 1);
    EXPECT_TRUE(MayBeRemote("pts/7")) << name;
    ::unsetenv(name);
  }
}

TEST_F(Network, MayBeHiddenByAMultiplexer) {
  for (const char* const type : {"screen", "screen.xterm-256color", "tmux", "tmux-256color"}) {
    ::setenv("TERM", type, 1);
    EXPECT_TRUE(MayBeRemote("pts/7")) << type;
  }
  ::setenv("TERM", "xterm-256color", 1);
  EXPECT_FALSE(MayBeRemote("pts/7"));
}
