// What a combination keeps in memory, what it does without memory, and the configuration of libcrypto.

#include "tests/combine/fake_source.h"
#include "tests/support/allocation.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <openssl/crypto.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

struct Watched {
  FakeSource one{"unixdev", 1};
  FakeSource other{"dsdr", 2};
  std::vector<rng::CombinedSource> named{one.Named(), other.Named("device")};
};

// How often the writable memory contains 16 bytes in a row of that stream's first 64.
int CountInMemory(unsigned seed) {
  int found = 0;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    unsigned long begin = 0;
    unsigned long end = 0;
    char rights[5] = "";
    if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, rights) != 3) continue;
    if (std::string(rights).substr(0, 2) != "rw") continue;
    const auto* const memory = reinterpret_cast<const unsigned char*>(begin);
    for (std::size_t place = 0; place + 16 <= end - begin; ++place) {
      for (std::size_t start = 0; start < 64; start += 16) {
        std::size_t equal = 0;
        while (equal < 16 && memory[place + equal] == StreamByte(seed, start + equal)) ++equal;
        found += equal == 16 ? 1 : 0;
      }
    }
  }
  return found;
}

}  // namespace

TEST(CombinedDraw, LeavesNoBytesOfTheSourcesInMemory) {
  Watched sources;
  rng::CombinedRng combined(sources.named);
  Bytes kept(64);
  for (std::size_t i = 0; i < kept.size(); ++i) kept[i] = StreamByte(1, i);
  EXPECT_LE(4, CountInMemory(1));  // the search finds what is there
  ::explicit_bzero(kept.data(), kept.size());
  ASSERT_EQ(0, CountInMemory(1));
  Bytes bytes(32);
  ASSERT_TRUE(combined.Generate(bytes.data(), bytes.size()));
  EXPECT_EQ(0, CountInMemory(1));
  EXPECT_EQ(0, CountInMemory(2));
  sources.other.draw = [](unsigned char*, std::size_t) { return false; };
  ASSERT_FALSE(combined.Generate(bytes.data(), bytes.size()));
  EXPECT_EQ(0, CountInMemory(1));
}

TEST(CombinedDraw, FailsIfMemoryRunsOut) {
  Watched sources;
  rng::CombinedRng combined(sources.named);
  const Bytes expected = DrawOf(sources.named);
  bool isDone = false;
  int failures = -1;
  for (std::size_t number = 1; !isDone; ++number, ++failures) {
    Bytes bytes(32, 0xAA);
    std::vector<rng::SourceOutcome> outcomes;
    FailAllocation(number);
    isDone = combined.Generate(bytes.data(), bytes.size(), outcomes);
    FailAllocation(0);
    EXPECT_EQ(isDone ? expected : Bytes(32), bytes) << number;
    ASSERT_LT(number, 100U);
  }
  EXPECT_LT(1, failures);
}

TEST(CombinedRng, LeaksNothingIfMemoryRunsOutInItsConstructor) {
  Watched sources;
  { const rng::CombinedRng warm(sources.named); }
  const std::size_t before = AllocationsAlive();
  int failures = -1;
  bool isDone = false;
  for (std::size_t number = 1; !isDone; ++number, ++failures) {
    FailAllocation(number);
    try {
      const rng::CombinedRng combined(sources.named);
      isDone = true;
    } catch (const std::bad_alloc&) {
    }
    FailAllocation(0);
    EXPECT_EQ(before, AllocationsAlive());
  }
  EXPECT_LT(1, failures);
}

TEST(CombinedDraw, DoesNotReadTheConfigurationOfOpenSsl) {
  const std::string file = testing::TempDir() + "combined_openssl.cnf";
  std::ofstream(file) << "# nothing\n";
  ::setenv("OPENSSL_CONF", file.c_str(), 1);
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_LE(0, ::inotify_add_watch(watch, file.c_str(), IN_OPEN));
  Watched sources;
  EXPECT_FALSE(DrawOf(sources.named).empty());
  alignas(inotify_event) char events[4096];
  EXPECT_EQ(-1, ::read(watch, events, sizeof events));
  OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);
  EXPECT_LT(0, ::read(watch, events, sizeof events));  // the watch would have noticed
  ::close(watch);
  std::filesystem::remove(file);
}
