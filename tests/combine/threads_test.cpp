// Several threads, and forked copies of the process.

#include "tests/combine/fake_source.h"

#include <atomic>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

struct Shared {
  SteadySource one{"unixdev", 1};
  SteadySource other{"dsdr", 2};
  rng::CombinedRng combined{{one.Named(), other.Named("device")}};
  const Bytes expected = DrawOf({one.Named(), other.Named("device")});

  bool Draws() {
    Bytes bytes(32);
    return combined.Generate(bytes.data(), bytes.size()) && bytes == expected;
  }

  // Whether a forked copy of the process draws.
  bool DrawsInChild() {
    const pid_t child = ::fork();
    if (child == 0) {
      ::alarm(60);  // not a limit of time, but an end if the child waits for a lock
      std::_Exit(Draws() ? 0 : 1);
    }
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0;
  }
};

}  // namespace

TEST(CombinedThreads, CanDrawAtTheSameTime) {
  Shared shared;
  std::atomic<int> wrong{0};
  const auto draw = [&] {
    for (int i = 0; i < 200; ++i) {
      if (!shared.Draws()) ++wrong;
      shared.combined.Cancel();
    }
  };
  std::thread first(draw);
  std::thread second(draw);
  first.join();
  second.join();
  EXPECT_EQ(0, wrong);
}

TEST(CombinedFork, LetsBothProcessesDraw) {
  Shared shared;
  EXPECT_TRUE(shared.DrawsInChild());
  EXPECT_TRUE(shared.Draws());
}

TEST(CombinedFork, LetsTheChildDrawEvenIfAThreadWasDrawing) {
  Shared shared;
  std::atomic<bool> ends{false};
  std::thread thread([&] {
    while (!ends) shared.Draws();
  });
  for (int i = 0; i < 50; ++i) EXPECT_TRUE(shared.DrawsInChild());
  ends = true;
  thread.join();
}

namespace {

// Whether the call ended its thread, as the cancellation of a thread does.
bool EndsItsThread(std::function<void()> call) {
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return argument;
  };
  pthread_t thread;
  if (::pthread_create(&thread, nullptr, run, &call) != 0) return false;
  void* result = &call;
  return ::pthread_join(thread, &result) == 0 && result == nullptr;
}

}  // namespace

// Otherwise the draw could go on to a source that waits, while the first one still handles the call.
TEST(CombinedThreads, ADrawNoticesACancelBeforeTheSourcesDo) {
  FakeSource one{"unixdev", 1};
  FakeSource other{"dsdr", 2};
  other.flags = kRngCapabilityNeedsUser;
  rng::CombinedRng combined{{one.Named(), other.Named()}};
  std::atomic<bool> isCalled{false};
  std::atomic<bool> hasEnded{false};
  one.whenAsked = [&] {
    isCalled = true;
    while (!hasEnded) std::this_thread::yield();
  };
  std::thread cancel;
  one.draw = [&, draw = one.draw](unsigned char* bytes, std::size_t size) {
    cancel = std::thread([&] { combined.Cancel(); });
    while (!isCalled) std::this_thread::yield();
    return draw(bytes, size);
  };
  Bytes bytes(32);
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size()));
  hasEnded = true;
  cancel.join();
  EXPECT_TRUE(other.sizes.empty());
}

// A thread that is cancelled in a source's draw unwinds; the buffer holds nothing of the draw.
TEST(CombinedThreads, CanBeCancelledDuringADraw) {
  FakeSource one{"unixdev", 1};
  FakeSource other{"dsdr", 2};
  rng::CombinedRng combined{{one.Named(), other.Named()}};
  Bytes bytes(32, 0xAA);
  other.draw = [](unsigned char* place, std::size_t size) {
    std::memset(place, 7, size);
    ::pthread_exit(nullptr);
    return true;
  };
  EXPECT_TRUE(EndsItsThread([&] { combined.Generate(bytes.data(), bytes.size()); }));
  EXPECT_EQ(Bytes(32), bytes);
}

// The C library would end the process if the unwinding stopped on its way.
TEST(CombinedThreads, CanBeCancelledInTheOtherOperationsOfASource) {
  FakeSource one{"unixdev", 1};
  rng::CombinedRng combined{{one.Named()}};
  one.whenAsked = [] { ::pthread_exit(nullptr); };
  EXPECT_TRUE(EndsItsThread([&] { combined.Cancel(); }));
  EXPECT_TRUE(EndsItsThread([&] { combined.GetFlags(); }));
  EXPECT_TRUE(EndsItsThread([&] { combined.IsAvailable(); }));
  EXPECT_TRUE(EndsItsThread([&] { combined.SelfTest(); }));
}
