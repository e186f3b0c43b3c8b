// A kernel without the getrandom call: the plug-in reads /dev/urandom.

#include "tests/support/open_files.h"
#include "tests/support/process.h"
#include "tests/unixdev/unixdev.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>

using testing::Each;

namespace {

ssize_t FillWithNines(unsigned char* buffer, std::size_t size) { return Fill(buffer, size, 9); }

int AnswerPoll(pollfd* event, int result) {
  event->revents = static_cast<short>(result);
  return 1;
}

}  // namespace

class Urandom : public UnixDev {
 protected:
  void SetUp() override {
    UnixDev::SetUp();
    g_source = [](unsigned char*, std::size_t) { return Fail(ENOSYS); };
  }

  FakeFile& urandom = FileAt("/dev/urandom");
  FakeFile& random = FileAt("/dev/random");
};

TEST_F(Urandom, GivesBytesAndLeavesNoFileOpen) {
  const std::ptrdiff_t before = CountOpenFiles();
  const Bytes first = Draw(kMebibyte);
  const Bytes second = Draw(kMebibyte);
  EXPECT_EQ(before, CountOpenFiles());
  EXPECT_NE(first, second);
  EXPECT_NE(Bytes(32, kOld), Bytes(second.end() - 32, second.end()));
  EXPECT_TRUE(rng->SelfTest());
}

TEST_F(Urandom, IsOpenedOncePerDraw) {
  urandom.read = [](unsigned char* buffer, std::size_t size) {
    return Fill(buffer, std::min<std::size_t>(size, 7), 9);
  };
  EXPECT_THAT(Draw(100), Each(9));
  EXPECT_EQ(1, urandom.opened);
  Draw(100);
  EXPECT_EQ(2, urandom.opened);
  EXPECT_EQ(O_CLOEXEC, urandom.flags & O_CLOEXEC);
}

TEST_F(Urandom, InterruptedReadIsRepeated) {
  int calls = 0;
  urandom.read = [&calls](unsigned char* buffer, std::size_t size) {
    return ++calls <= 3 ? Fail(EINTR) : Fill(buffer, size, 9);
  };
  EXPECT_THAT(Draw(32), Each(9));
  EXPECT_EQ(4, calls);
}

TEST_F(Urandom, ADrawIsNotMixedFromTwoSources) {
  int calls = 0;
  g_source = [&calls](unsigned char* buffer, std::size_t) {
    return ++calls == 1 ? Fill(buffer, 10, 7) : Fail(ENOSYS);
  };
  urandom.read = FillWithNines;
  EXPECT_THAT(Draw(32), Each(9));
}

TEST_F(Urandom, IsNotUsedWhenTheCallFailsOtherwise) {
  for (const int error : {EAGAIN, EPERM, EIO, EOPNOTSUPP}) {
    g_source = [error](unsigned char*, std::size_t) { return Fail(error); };
    ExpectFailureLeavesZeroes();
  }
  g_source = [](unsigned char*, std::size_t) {
    errno = ENOSYS;  // of an earlier call
    return ssize_t{0};
  };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(0, urandom.opened);
}

TEST_F(Urandom, MustBeTheDeviceItself) {
  WriteFile(TreePath("regular"), std::string(64, 'x'));
  for (const std::string path : {"/dev/zero", "/dev/random", "/no/such/file", "regular", ""}) {
    urandom.path = path == "regular" || path.empty() ? TreePath(path) : path;
    ExpectFailureLeavesZeroes();
  }
  EXPECT_EQ(5, urandom.opened);
}

TEST_F(Urandom, MustBeKnownToBeTheDevice) {
  Draw(32);  // the pool is ready
  g_statError = EIO;
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(2, urandom.opened);
}

TEST_F(Urandom, FailingReadLeavesZeroes) {
  for (const int error : {EAGAIN, EIO}) {
    urandom.read = [error](unsigned char*, std::size_t) { return Fail(error); };
    ExpectFailureLeavesZeroes();
  }
  urandom.read = [](unsigned char*, std::size_t) { return ssize_t{0}; };
  ExpectFailureLeavesZeroes();
}

TEST_F(Urandom, FailureAfterAShortReadLeavesZeroes) {
  int calls = 0;
  urandom.read = [&calls](unsigned char* buffer, std::size_t) {
    return ++calls == 1 ? Fill(buffer, 10, 9) : Fail(EIO);
  };
  ExpectFailureLeavesZeroes();
}

TEST_F(Urandom, WithoutDescriptorsDrawsFail) {
  rlimit limit{};
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
  const rlimit none{0, limit.rlim_max};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &none));
  ExpectFailureLeavesZeroes();
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
  Draw(32);
}

// --- Until the kernel's pool is ready

TEST_F(Urandom, PollsForThePoolOncePerProcess) {
  int polls = 0;
  g_poll = [&](pollfd* event) {
    ++polls;
    EXPECT_EQ(POLLIN, event->events);
    EXPECT_EQ(0, urandom.opened);
    return AnswerPoll(event, POLLIN);
  };
  for (int i = 0; i < 3; ++i) Draw(32);
  EXPECT_EQ(1, polls);
  EXPECT_EQ(1, random.opened);
  EXPECT_EQ(0, RunForked([this] { return rng->SelfTest() && random.opened == 1 ? 0 : 1; }).status);
}

TEST_F(Urandom, InterruptedPollIsRepeated) {
  int polls = 0;
  g_poll = [&polls](pollfd* event) {
    return ++polls <= 3 ? static_cast<int>(Fail(EINTR)) : AnswerPoll(event, POLLIN);
  };
  Draw(32);
  EXPECT_EQ(4, polls);
}

TEST_F(Urandom, APoolThatIsNotReadyFailsTheDrawAndIsPolledAgain) {
  for (const int result : {POLLERR, POLLHUP, POLLNVAL}) {
    g_poll = [result](pollfd* event) { return AnswerPoll(event, result); };
    ExpectFailureLeavesZeroes();
  }
  g_poll = [](pollfd*) { return static_cast<int>(Fail(ENOMEM)); };
  ExpectFailureLeavesZeroes();
  g_poll = [](pollfd* event) {
    AnswerPoll(event, POLLIN);
    errno = EINTR;  // of an earlier call
    return 0;
  };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(0, urandom.opened);
  g_poll = nullptr;
  Draw(32);
}

TEST_F(Urandom, ThePoolsDeviceMustBeTheDeviceItself) {
  for (const char* path : {"/dev/null", "/dev/urandom", "/no/such/file"}) {
    random.path = path;
    ExpectFailureLeavesZeroes();
  }
  EXPECT_EQ(0, urandom.opened);
}
