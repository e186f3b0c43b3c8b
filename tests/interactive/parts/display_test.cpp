// Whether a display is there, without connecting to it for longer than a moment.

#include "plugins/interactive/display.h"

#include "tests/support/open_files.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

using testing::HasSubstr;

namespace {

constexpr char kFolder[] = "/tmp/.X11-unix";

class Socket {
 public:
  explicit Socket(const std::string& path)
      : descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    std::memcpy(address.sun_path, path.data(), path.size());
    size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() {
    ::close(descriptor);
    if (*address.sun_path) ::unlink(address.sun_path);
  }

  void Listen() {
    if (::bind(descriptor, Address(), size) != 0 || ::listen(descriptor, 0) != 0) {
      throw std::runtime_error("no socket");
    }
  }
  bool Connect() { return ::connect(descriptor, Address(), size) == 0; }

 private:
  const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address); }

  const int descriptor;
  sockaddr_un address = {AF_UNIX, {}};
  socklen_t size;
};

// Servers of this process have numbers of their own.
std::string Number() { return std::to_string(1'000'000 + ::getpid()); }

std::string PathOf(const std::string& number) { return kFolder + ("/X" + number); }
std::string AbstractPathOf(const std::string& number) { return '\0' + PathOf(number); }

bool IsThere(const std::string& display) {
  ::setenv("DISPLAY", display.c_str(), 1);
  return HasDisplay();
}

}  // namespace

TEST(Display, IsAbsentWhereNobodyListens) {
  ::unsetenv("DISPLAY");
  EXPECT_FALSE(HasDisplay());
  EXPECT_THAT(FindProblemOfDisplay(), HasSubstr("DISPLAY is not set"));
  for (const std::string& name :
       {std::string(), std::string("host"), std::string(":"), ':' + Number(), "unix:" + Number()}) {
    EXPECT_FALSE(IsThere(name)) << name;
  }
  EXPECT_THAT(FindProblemOfDisplay(), HasSubstr("no X server answers"));
}

TEST(Display, HasAnAbstractSocket) {
  Socket server(AbstractPathOf(Number()));
  server.Listen();
  for (const std::string& name :
       {':' + Number(), ':' + Number() + ".1", "unix:" + Number(), "unix:" + Number() + ".0"}) {
    EXPECT_TRUE(IsThere(name)) << name;
  }
  EXPECT_EQ("", FindProblemOfDisplay());
}

TEST(Display, HasASocketInTheFileSystem) {
  ::mkdir(kFolder, 01777);
  Socket server(PathOf(Number()));
  server.Listen();
  EXPECT_TRUE(IsThere(':' + Number()));
}

TEST(Display, HasANumber) {
  Socket server(AbstractPathOf(Number() + "/x"));
  server.Listen();
  EXPECT_FALSE(IsThere(':' + Number() + "/x"));
}

TEST(Display, HasANumberThatFitsIntoAnAddress) {
  for (std::size_t digits = 80; digits < 120; ++digits) {
    EXPECT_FALSE(IsThere(':' + std::string(digits, '1'))) << digits;
  }
}

TEST(Display, OfAnotherMachineIsBelieved) {
  for (const char* const name : {"localhost:10.0", "screen.example:0", "[::1]:0"}) {
    EXPECT_TRUE(IsThere(name)) << name;
  }
}

TEST(Display, MayBeBusy) {
  Socket server(AbstractPathOf(Number()));
  server.Listen();
  std::vector<std::unique_ptr<Socket>> clients;
  do {
    clients.push_back(std::make_unique<Socket>(AbstractPathOf(Number())));
  } while (clients.back()->Connect());
  EXPECT_EQ(EAGAIN, errno);
  EXPECT_TRUE(IsThere(':' + Number()));
}

TEST(Display, LeavesNoDescriptors) {
  Socket server(AbstractPathOf(Number()));
  server.Listen();
  const auto before = CountOpenFiles();
  EXPECT_TRUE(IsThere(':' + Number()));
  EXPECT_FALSE(IsThere(":1" + Number()));
  EXPECT_EQ(before, CountOpenFiles());
}

TEST(Display, IsAbsentWhereNoSocketCanBeMade) {
  Socket server(AbstractPathOf(Number()));
  server.Listen();
  ASSERT_TRUE(IsThere(":" + Number()));
  const rlimit none = {0, 0};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &none));
  EXPECT_FALSE(HasDisplay());
}
