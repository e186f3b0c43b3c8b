#include "tools/rngctl/channel/channel.h"

#include "tests/support/tree.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace {

// The bytes that arrive when these messages are sent.
std::string Sent(std::initializer_list<std::string> messages) {
  int ends[2];
  EXPECT_EQ(0, ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
  for (const std::string& message : messages) EXPECT_TRUE(WriteMessage(ends[0], message));
  ::close(ends[0]);
  std::string text(65536, '\0');
  text.resize(static_cast<std::size_t>(::read(ends[1], text.data(), text.size())));
  ::close(ends[1]);
  return text;
}

// Both ends; the parent's first.
class Pair {
 public:
  Pair() { EXPECT_EQ(0, ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends)); }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;
  ~Pair() {
    CloseParent();
    ::close(ends[1]);
  }

  int Parent() const { return ends[0]; }
  int Child() const { return ends[1]; }
  void Write(const std::string& bytes) const {
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(ends[0], bytes.data(), bytes.size()));
  }
  void CloseParent() {
    if (ends[0] >= 0) ::close(ends[0]);
    ends[0] = -1;
  }

 private:
  int ends[2];
};

std::string ReadToEnd(int descriptor) {
  std::string text;
  char piece[4096];
  for (ssize_t count = 1; count > 0 || (count < 0 && errno == EINTR);) {
    count = ::read(descriptor, piece, sizeof piece);
    if (count > 0) text.append(piece, static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

TEST(Channel, TheLastMessageCounts) {
  EXPECT_EQ("two", FindLastMessage(Sent({"one", "two"})));
  EXPECT_EQ("", FindLastMessage(Sent({"one", ""})));
  EXPECT_EQ(std::nullopt, FindLastMessage(""));
}

TEST(Channel, AMessageThatIsCutShortDoesNotCount) {
  const std::string sent = Sent({"one", "two"});
  const std::size_t whole = Sent({"one"}).size();
  for (std::size_t size = whole; size < sent.size(); ++size) {
    EXPECT_EQ("one", FindLastMessage(sent.substr(0, size))) << size;
  }
  EXPECT_EQ(std::nullopt, FindLastMessage(sent.substr(0, whole - 1)));
}

TEST(Channel, NothingCountsAmongOtherText) {
  EXPECT_EQ(std::nullopt, FindLastMessage(Sent({"one"}) + "some other text"));
  EXPECT_EQ(std::nullopt, FindLastMessage("some other text" + Sent({"one"})));
}

TEST(Channel, LastWordsAreNoMessage) {
  std::string words = Sent({"words"});
  ++words[0];  // another mark
  const std::string sent = Sent({"one"}) + words;
  EXPECT_EQ("one", FindLastMessage(sent));
  EXPECT_EQ("words", FindLastWords(sent));
  EXPECT_EQ("", FindLastWords(Sent({"one"})));
}

TEST(Channel, AFileIsNotWrittenTo) {
  const std::string file = TreePath("file");
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT, 0600);
  EXPECT_FALSE(WriteMessage(descriptor, "one"));
  ::close(descriptor);
  EXPECT_EQ("", ReadFile(file));
}

TEST(Channel, SignalsDoNotDivideAMessage) {
  Pair pair;
  std::string received;
  std::thread reader([&] { received = ReadToEnd(pair.Child()); });
  struct sigaction action = {};
  action.sa_handler = [](int) {};  // without SA_RESTART
  ::sigaction(SIGALRM, &action, nullptr);
  const itimerval often = {{0, 500}, {0, 500}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  std::string message(10'000'000, '\0');
  for (std::size_t i = 0; i < message.size(); ++i) message[i] = static_cast<char>(i * 31 / 7);
  EXPECT_TRUE(WriteMessage(pair.Parent(), message));
  const itimerval never = {};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  pair.CloseParent();
  reader.join();
  EXPECT_TRUE(message == FindLastMessage(received));
}

// --- In a child

TEST(Channel, AChildReceivesItsRequestAndAnswers) {
  Pair pair;
  EXPECT_TRUE(WriteMessage(pair.Parent(), "request"));
  EXPECT_EQ("request", OpenChannel(pair.Child()));
  EXPECT_EQ(FD_CLOEXEC, ::fcntl(pair.Child(), F_GETFD));
  SendMessage("answer");
  SendLastWords("words");
  ::shutdown(pair.Child(), SHUT_WR);
  const std::string sent = ReadToEnd(pair.Parent());
  EXPECT_EQ("answer", FindLastMessage(sent));
  EXPECT_EQ("words", FindLastWords(sent));
}

TEST(Channel, WhatIsNoRequestIsRefused) {
  const std::string request = Sent({"request"});
  std::string words = request;
  ++words[0];
  std::string huge = request;
  huge[7] = 2;  // the highest byte of the size: 32 MiB
  for (const std::string& bytes :
       {std::string(), request.substr(0, 7), request.substr(0, 12), words, huge}) {
    Pair pair;
    pair.Write(bytes);
    pair.CloseParent();
    EXPECT_EQ(std::nullopt, OpenChannel(pair.Child())) << bytes.size();
  }
  EXPECT_EQ(std::nullopt, OpenChannel(-1));
}

TEST(Channel, TheLargestRequestHasSixteenMebibytes) {
  constexpr std::size_t kLargest = 1U << 24;
  for (const std::size_t size : {kLargest, kLargest + 1}) {
    Pair pair;
    std::thread writer([&] { WriteMessage(pair.Parent(), std::string(size, 'x')); });
    EXPECT_EQ(size == kLargest, OpenChannel(pair.Child()).has_value());
    ::shutdown(pair.Child(), SHUT_RDWR);  // the writer fails if it still writes
    writer.join();
  }
}

TEST(Channel, AChildIsHeardUntilItsParentClosesItsEnd) {
  Pair pair;
  EXPECT_TRUE(IsHeard(pair.Child()));  // and does not wait
  pair.Write("x");
  EXPECT_TRUE(IsHeard(pair.Child()));
  char byte = 0;
  EXPECT_EQ(1, ::read(pair.Child(), &byte, 1));  // it is still there
  pair.CloseParent();
  EXPECT_FALSE(IsHeard(pair.Child()));
}
