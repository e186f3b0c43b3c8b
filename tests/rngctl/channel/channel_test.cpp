#include "tools/rngctl/channel/channel.h"

#include "tests/support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
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
