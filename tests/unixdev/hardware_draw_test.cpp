#include "tests/support/open_files.h"
#include "tests/support/process.h"
#include "tests/unixdev/hardware.h"

#include <thread>

using testing::Each;

class HardwareDraw : public Hardware {
 protected:
  void SetUp() override {
    Hardware::SetUp();
    ASSERT_TRUE(rng->SelectDevice("hwrng"));
    device.opened = 0;
  }
};

TEST_F(HardwareDraw, FillsBuffersOfEverySizeFromTheDeviceAlone) {
  g_calls = 0;
  for (const std::size_t size : {1UL, 32UL, 63UL, 64UL, 65UL, 4096UL, 1UL << 20}) {
    EXPECT_TRUE(size < 32 || Draw(size) != Draw(size));
  }
  EXPECT_EQ(0, g_calls);
}

TEST_F(HardwareDraw, ZeroBytesSucceedsAndOpensNothing) {
  EXPECT_TRUE(rng->Generate(nullptr, 0));
  EXPECT_EQ(0, device.opened);
}

TEST_F(HardwareDraw, OpensTheDeviceOnceAndClosesIt) {
  const std::ptrdiff_t before = CountOpenFiles();
  Draw(1000);
  EXPECT_EQ(1, device.opened);
  device.read = [](unsigned char*, std::size_t) { return Fail(EIO); };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(before, CountOpenFiles());
}

TEST_F(HardwareDraw, BytesArriveInTheirOrder) {
  unsigned char next = 0;
  device.read = [&next](unsigned char* bytes, std::size_t size) {
    const std::size_t count = std::min<std::size_t>(size, 3);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = next++;
    return static_cast<ssize_t>(count);
  };
  const Bytes bytes = Draw(200);
  for (std::size_t i = 0; i < bytes.size(); ++i) EXPECT_EQ(i, bytes[i]);
}

TEST_F(HardwareDraw, HandlesSingleBytesInterruptionsAndPauses) {
  FakeTime();
  int calls = 0;
  device.read = [&calls](unsigned char* bytes, std::size_t) {
    switch (++calls % 3) {
      case 0:
        return FillWell(bytes, 1);
      case 1:
        return Fail(EINTR);
      default:
        return Fail(EAGAIN);
    }
  };
  Draw(40);
  EXPECT_EQ(120, calls);
  EXPECT_EQ(std::chrono::milliseconds(40), FakeTimePassed());  // an interruption is no pause
}

TEST_F(HardwareDraw, ReadsInPiecesSoThatACancelIsNoticed) {
  device.read = [](unsigned char* bytes, std::size_t size) {
    EXPECT_GE(64U, size);
    return FillWell(bytes, size);
  };
  Draw(1000);
}

TEST_F(HardwareDraw, FailureOrEndLeavesZeroes) {
  for (const int error : {EIO, ENODEV, EPIPE, EINVAL, EBUSY, 0}) {
    int calls = 0;
    device.read = [&calls, error](unsigned char* bytes, std::size_t) {
      if (++calls <= 2) return FillWell(bytes, 10);
      if (error != 0) return Fail(error);
      errno = EAGAIN;  // of an earlier call
      return ssize_t{0};
    };
    ExpectFailureLeavesZeroes();
    EXPECT_EQ(3, calls);
  }
  device.read = FillWell;
  EXPECT_TRUE(DrawsFromHardware());  // none of this was an alarm
}

TEST_F(HardwareDraw, NeverFallsBackToTheSystemsGenerator) {
  g_calls = 0;
  device.error = ENOENT;
  ExpectFailureLeavesZeroes();
  device.error = 0;
  device.path = TreePath("");
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(0, g_calls);
}

TEST_F(HardwareDraw, GivesUpAfterTenSecondsWithoutAByte) {
  FakeTime();
  bool isFirst = true;
  device.read = [&isFirst](unsigned char* bytes, std::size_t) {
    return std::exchange(isFirst, false) ? FillWell(bytes, 10) : Fail(EAGAIN);
  };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(std::chrono::seconds(10), FakeTimePassed());
}

TEST_F(HardwareDraw, PausesForAMillisecondWhenThereIsNoByte) {
  FakeTime();
  int calls = 0;
  device.read = [&calls](unsigned char* bytes, std::size_t size) {
    return ++calls <= 5 ? Fail(EAGAIN) : FillWell(bytes, size);
  };
  Draw(32);
  EXPECT_EQ(std::chrono::milliseconds(5), FakeTimePassed());
}

TEST_F(HardwareDraw, HasNoTimeLimitWhileBytesCome) {
  FakeTime();
  std::int64_t given = 0;
  device.read = [&given](unsigned char* bytes, std::size_t) {
    if (FakeTimePassed() < (given + 1) * std::chrono::milliseconds(9500)) return Fail(EAGAIN);
    ++given;
    return FillWell(bytes, 1);
  };
  Draw(16);
  EXPECT_GE(FakeTimePassed(), std::chrono::seconds(150));
}

// --- Cancelling

TEST_F(HardwareDraw, CancelEndsAllDrawsThatWait) {
  std::atomic<int> reads = 0;
  std::atomic<bool> isCancelled = false;
  device.read = [&](unsigned char* bytes, std::size_t size) {
    ++reads;
    return isCancelled ? FillWell(bytes, size) : Fail(EAGAIN);  // a draw that goes on succeeds
  };
  std::atomic<int> drawn = 0;
  std::vector<Bytes> buffers(4, Bytes(32, kOld));
  std::vector<std::thread> threads;
  for (Bytes& bytes : buffers) {
    threads.emplace_back([&] { drawn += rng->Generate(bytes.data(), bytes.size()); });
  }
  while (device.opened < 4) std::this_thread::yield();  // all of them have begun
  const int before = reads;
  while (reads < before + 20) std::this_thread::yield();
  rng->Cancel();
  isCancelled = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, drawn);
  for (const Bytes& bytes : buffers) EXPECT_THAT(bytes, Each(0));
  EXPECT_TRUE(DrawsFromHardware());
}

TEST_F(HardwareDraw, CancelEndsADrawWhoseBytesStillCome) {
  int reads = 0;
  device.read = [&](unsigned char* bytes, std::size_t) {
    if (++reads == 5) rng->Cancel();
    return FillWell(bytes, 1);
  };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(5, reads);
}

TEST_F(HardwareDraw, CancelEndsADrawWhoseLastBytesCome) {
  device.read = [&](unsigned char* bytes, std::size_t size) {
    rng->Cancel();
    return FillWell(bytes, size);
  };
  ExpectFailureLeavesZeroes();
}

TEST_F(HardwareDraw, CancelEndsTestsAndSelections) {
  device.read = [&](unsigned char* bytes, std::size_t size) {
    rng->Cancel();
    return FillWell(bytes, size);
  };
  EXPECT_FALSE(rng->SelfTest());
  EXPECT_FALSE(rng->IsAvailable());
  EXPECT_TRUE(rng->SelectDevice(""));
  EXPECT_FALSE(rng->SelectDevice("hwrng"));  // the first one, while the system's generator is used
  EXPECT_FALSE(IsSelected());
}

TEST_F(HardwareDraw, CancelEndsADrawThatIsOpeningTheDevice) {
  device.opening = [this] { rng->Cancel(); };
  ExpectFailureLeavesZeroes();
}

TEST_F(HardwareDraw, CancelDoesNotAffectLaterDraws) {
  rng->Cancel();
  int calls = 0;
  device.read = [&calls](unsigned char* bytes, std::size_t size) {
    return ++calls < 10 ? Fail(EAGAIN) : FillWell(bytes, size);
  };
  Draw(32);
}

// --- Threads and copies of the process

TEST_F(HardwareDraw, ThreadsDrawAtOnceWhileOthersSelect) {
  std::atomic<int> successes = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this, i, &successes] {
      unsigned char bytes[300];
      for (int draw = 0; draw < 100; ++draw) {
        successes += rng->Generate(bytes, sizeof bytes);
        if (i == 0) rng->SelectDevice(draw % 2 == 0 ? "" : "hwrng");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(800, successes);
}

TEST_F(HardwareDraw, AForkedCopyDrawsWhateverOtherThreadsDid) {
  std::atomic<bool> isDone = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([this, &isDone] {
      Bytes bytes(5000);
      while (!isDone) rng->Generate(bytes.data(), bytes.size());
    });
  }
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(0, RunForked([this] { return rng->Generate(buffer, sizeof buffer) ? 0 : 1; }).status);
  }
  isDone = true;
  for (std::thread& thread : threads) thread.join();
}
