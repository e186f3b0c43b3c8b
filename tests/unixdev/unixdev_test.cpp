#include "tests/unixdev/unixdev.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <thread>

using testing::Each;

// --- What it reports

using TextOperation = std::int32_t (IRngProvider::*)(char* buffer);

std::string ReportedText(IRngProvider& rng, TextOperation operation) {
  const std::int32_t size = (rng.*operation)(nullptr);
  std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '\0');
  buffer.back() = '!';
  EXPECT_EQ(size, (rng.*operation)(buffer.data()));
  EXPECT_EQ('!', buffer.back());
  const std::string text = buffer.data();
  EXPECT_EQ(static_cast<std::size_t>(size), text.size() + 1);
  return text;
}

TEST_F(UnixDev, ReportsItsNameWithTheTerminatorCounted) {
  EXPECT_EQ("unixdev", ReportedText(*rng, &IRngProvider::GetName));
  EXPECT_EQ(rng, library.GetRng(library.NameVariable("rngUnixDev")));
}

TEST_F(UnixDev, DescribesItselfInOneLine) {
  EXPECT_EQ("The operating system's random-number generator",
            ReportedText(*rng, &IRngProvider::GetDescription));
}

TEST_F(UnixDev, HasNoHardwareId) { EXPECT_EQ(0, rng->GetHardwareId(nullptr)); }

TEST_F(UnixDev, IsTheOperatingSystemsAndNothingElse) {
  EXPECT_EQ(kRngCapabilityOperatingSystem, rng->GetFlags());
  EXPECT_EQ(1, library.GetAvailableRng(nullptr, kRngCapabilityOperatingSystem));
  EXPECT_EQ(0, library.GetAvailableRng(nullptr, ~kRngCapabilityOperatingSystem));
}

TEST_F(UnixDev, IsAvailableAndPassesItsTest) {
  EXPECT_TRUE(rng->IsAvailable());
  EXPECT_TRUE(rng->SelfTest());
}

TEST_F(UnixDev, TakesAnyDeviceAndKnowsNone) {
  EXPECT_TRUE(rng->SelectDevice(nullptr));
  EXPECT_TRUE(rng->SelectDevice(""));  // as the record of the default says "any"
  EXPECT_FALSE(rng->SelectDevice("unixdev"));
  EXPECT_FALSE(rng->SelectDevice("/dev/urandom"));
  EXPECT_TRUE(rng->SelfTest());  // a refusal changes nothing
}

// --- Drawing

class UnixDevGenerate : public UnixDev {};

TEST_F(UnixDevGenerate, ZeroBytesSucceedsAndTouchesNothing) {
  unsigned char byte = kOld;
  g_calls = 0;
  EXPECT_TRUE(rng->Generate(&byte, 0));
  EXPECT_TRUE(rng->Generate(nullptr, 0));
  EXPECT_EQ(kOld, byte);
  EXPECT_EQ(0, g_calls);
}

class UnixDevGenerateSizes : public UnixDevGenerate,
                             public testing::WithParamInterface<std::size_t> {};

// By chance, a byte stays equal in 16 draws once in 256^15 times.
TEST_P(UnixDevGenerateSizes, ChangesEveryByteFromDrawToDraw) {
  const std::size_t size = GetParam();
  const Bytes first = Draw(size);
  std::vector<bool> hasChanged(size);
  for (int draw = 1; draw < 16; ++draw) {
    const Bytes bytes = Draw(size);
    for (std::size_t i = 0; i < size; ++i) hasChanged[i] = hasChanged[i] || bytes[i] != first[i];
  }
  EXPECT_EQ(0, std::count(hasChanged.begin(), hasChanged.end(), false));
}

INSTANTIATE_TEST_SUITE_P(Of, UnixDevGenerateSizes, testing::Values(1, 32, 257, kMebibyte));

TEST_F(UnixDevGenerate, DrawsFromGetrandom) {
  g_source = [](unsigned char* buffer, std::size_t size) { return Fill(buffer, size, 7); };
  EXPECT_THAT(Draw(32), Each(7));
}

// With a flag, the call would return bytes before the kernel's pool is ready, fail, or block for long.
TEST_F(UnixDevGenerate, PassesNoFlags) {
  EXPECT_TRUE(rng->SelfTest());
  Draw(32);
  EXPECT_LT(0, g_calls);
  EXPECT_EQ(0U, g_flags);
}

TEST_F(UnixDevGenerate, DrawsAfterACancelAsBefore) {
  rng->Cancel();
  EXPECT_NE(Draw(32), Draw(32));
}

TEST_F(UnixDevGenerate, ThreadsDrawAtOnceWithTheQueries) {
  std::vector<std::thread> threads;
  std::vector<Bytes> draws(4, Bytes(kMebibyte));
  std::atomic<int> successes = 0;
  for (Bytes& draw : draws) {
    threads.emplace_back([this, &draw, &successes] {
      successes += library.GetAvailableRng(nullptr, kAllBits) == 1;
      successes += library.GetRng("unixdev") == rng;
      successes += rng->Generate(draw.data(), draw.size());
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(12, successes);
  for (std::size_t i = 1; i < draws.size(); ++i) EXPECT_NE(draws[0], draws[i]);
}

// --- A source with faults

TEST_F(UnixDevGenerate, InterruptedCallIsRepeated) {
  int calls = 0;
  g_source = [&calls](unsigned char* buffer, std::size_t size) {
    return ++calls <= 3 ? Fail(EINTR) : Fill(buffer, size, 7);
  };
  EXPECT_THAT(Draw(32), Each(7));
  EXPECT_EQ(4, calls);
}

TEST_F(UnixDevGenerate, ShortReadsAreContinuedWhereTheyEnded) {
  unsigned char calls = 0;
  std::size_t remaining = 35;
  g_source = [&](unsigned char* buffer, std::size_t size) {
    EXPECT_EQ(remaining, size);
    const ssize_t count = Fill(buffer, std::min<std::size_t>(size, 10), ++calls);
    remaining -= static_cast<std::size_t>(count);
    return count;
  };
  Bytes expected(35, 4);
  for (std::size_t i = 0; i < 30; ++i) expected[i] = static_cast<unsigned char>(1 + i / 10);
  EXPECT_EQ(expected, Draw(35));
}

TEST_F(UnixDevGenerate, InterruptionBetweenShortReadsLosesNothing) {
  int calls = 0;
  g_source = [&calls](unsigned char* buffer, std::size_t) {
    return ++calls % 2 == 1 ? Fail(EINTR) : Fill(buffer, 1, 7);
  };
  EXPECT_THAT(Draw(8), Each(7));
  EXPECT_EQ(16, calls);
}

TEST_F(UnixDevGenerate, FailureLeavesZeroes) {
  for (const int error : {EAGAIN, EFAULT, EINVAL, EIO, EPERM}) {
    g_source = [error](unsigned char*, std::size_t) { return Fail(error); };
    ExpectFailureLeavesZeroes();
  }
}

TEST_F(UnixDevGenerate, FailureAfterAShortReadLeavesZeroes) {
  int calls = 0;
  g_source = [&calls](unsigned char* buffer, std::size_t) {
    return ++calls == 1 ? Fill(buffer, 10, 7) : Fail(EIO);
  };
  ExpectFailureLeavesZeroes();
  EXPECT_EQ(2, calls);
}

TEST_F(UnixDevGenerate, SourceThatEndsLeavesZeroes) {
  int calls = 0;
  g_source = [&calls](unsigned char* buffer, std::size_t) {
    return ++calls == 1 ? Fill(buffer, 31, 7) : 0;
  };
  ExpectFailureLeavesZeroes();
}

TEST_F(UnixDevGenerate, WorksAgainAfterAFailure) {
  g_source = [](unsigned char*, std::size_t) { return Fail(EIO); };
  ExpectFailureLeavesZeroes();
  g_source = nullptr;
  EXPECT_NE(Draw(32), Draw(32));
}

TEST_F(UnixDev, FailingSourceIsNotAvailable) {
  g_source = [](unsigned char*, std::size_t) { return Fail(EIO); };
  EXPECT_FALSE(rng->SelfTest());
  EXPECT_EQ(0, Restart());
  EXPECT_FALSE(IsMapped("librngunixdev.so"));
}

TEST_F(UnixDev, SourceThatRepeatsItselfIsNotAvailable) {
  g_source = [](unsigned char* buffer, std::size_t size) { return Fill(buffer, size, 7); };
  EXPECT_FALSE(rng->SelfTest());
  EXPECT_EQ(0, Restart());
}

TEST_F(UnixDev, AvailabilityIsTestedEachTime) {
  for (int round = 0; round < 2; ++round) {
    g_source = [](unsigned char*, std::size_t) { return Fail(EIO); };
    EXPECT_FALSE(rng->IsAvailable());
    g_source = nullptr;
    EXPECT_TRUE(rng->IsAvailable());
  }
}

TEST_F(UnixDev, BothDrawsOfTheTestMustSucceed) {
  for (const int failing : {1, 2}) {
    int calls = 0;
    g_source = [&calls, failing](unsigned char* buffer, std::size_t size) {
      return ++calls == failing ? Fail(EIO) : FillWell(buffer, size);
    };
    EXPECT_FALSE(rng->SelfTest());
    EXPECT_EQ(failing, calls);
  }
}

// If only some of the bytes were compared, a good source would fail now and then.
TEST_F(UnixDev, DrawsOfTheTestDifferIfOneByteDoes) {
  for (const std::size_t place : {0U, 15U, 31U}) {
    unsigned char calls = 0;
    g_source = [&calls, place](unsigned char* buffer, std::size_t size) {
      EXPECT_EQ(32U, size);
      Fill(buffer, size, 7);
      if (place < size) buffer[place] = ++calls;
      return static_cast<ssize_t>(size);
    };
    EXPECT_TRUE(rng->SelfTest()) << place;
  }
}

// --- Loading

// Another part of the process has opened the plug-in, too, so a new start finds the same object.
class UnixDevKeptLoaded : public UnixDev {
 protected:
  void SetUp() override {
    UnixDev::SetUp();
    kept = ::dlopen(TreePath("lib/librngunixdev.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(nullptr, kept);
  }
  void TearDown() override { ::dlclose(kept); }

  void* kept = nullptr;
};

TEST_F(UnixDevKeptLoaded, WorksAfterItsRelease) {
  for (int start = 0; start < 2; ++start) {
    ASSERT_EQ(1, Restart());
    EXPECT_EQ(rng, library.GetRng("unixdev"));
    EXPECT_TRUE(rng->SelfTest());
    EXPECT_NE(Draw(32), Draw(32));
  }
}

TEST_F(UnixDevKeptLoaded, IsListedWheneverItsSourceWorks) {
  for (int round = 0; round < 2; ++round) {
    g_source = [](unsigned char*, std::size_t) { return Fail(EIO); };
    EXPECT_EQ(0, Restart());
    g_source = nullptr;
    EXPECT_EQ(1, Restart());
  }
}

TEST_F(UnixDev, LeavesTheProcessAtTheFinalShutDown) {
  EXPECT_TRUE(IsMapped("librngunixdev.so"));
  library.ShutDown();
  EXPECT_FALSE(IsMapped("librngunixdev.so"));
}

TEST_F(UnixDev, WorksAfterAFullStopAndANewStart) {
  for (int start = 0; start < 3; ++start) {
    ASSERT_EQ(1, Restart());
    IRngProvider* const again = library.GetRng("unixdev");
    ASSERT_NE(nullptr, again);
    EXPECT_TRUE(again->SelfTest());
  }
}
