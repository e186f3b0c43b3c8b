// What the result depends on.

#include "tests/combine/fake_source.h"

#include <gmock/gmock.h>
#include <set>

namespace {

using rng::CombinedSource;

struct Three {
  FakeSource a{"unixdev", 1};
  FakeSource b{"dsdr", 2};
  FakeSource c{"Rutoken", 3};
  std::vector<CombinedSource> Named() { return {a.Named(), b.Named(), c.Named("serial")}; }
};

}  // namespace

TEST(CombinedBytes, DependOnEverySource) {
  Three same;
  std::set<Bytes> results{DrawOf(same.Named())};
  for (FakeSource Three::*changed : {&Three::a, &Three::b, &Three::c}) {
    for (std::size_t bit = 0; bit < 64 * std::size_t{8}; bit += 73) {
      Three three;
      const auto before = (three.*changed).draw;
      (three.*changed).draw = [before, bit](unsigned char* bytes, std::size_t size) {
        const bool isDone = before(bytes, size);
        bytes[bit / 8] = static_cast<unsigned char>(bytes[bit / 8] ^ (1U << bit % 8));
        return isDone;
      };
      EXPECT_TRUE(results.insert(DrawOf(three.Named())).second) << "bit " << bit;
    }
  }
  EXPECT_EQ(0U, results.count(Bytes{}));
}

TEST(CombinedBytes, DependOnTheOrderOfTheSources) {
  Three three;
  std::set<Bytes> results;
  std::vector<CombinedSource> named = three.Named();
  for (int i = 0; i < 3; ++i) {
    std::rotate(named.begin(), named.begin() + 1, named.end());
    EXPECT_TRUE(results.insert(DrawOf(named)).second);
  }
}

// The same bytes in a row, if it were not for the lengths.
TEST(CombinedBytes, DependOnWhereTheKindEndsAndTheDeviceBegins) {
  const auto draw = [](const char* kind, const char* device) {
    FakeSource source(kind);
    return DrawOf({source.Named(device)});
  };
  const std::set<Bytes> results{draw("abc", ""),  draw("ab", "c"),  draw("a", "bc"),
                                draw("ab", "cd"), draw("abc", "d"), draw("abcd", "")};
  EXPECT_EQ(6U, results.size());
  EXPECT_EQ(0U, results.count(Bytes{}));
}

TEST(CombinedBytes, DoNotDependOnASourceThatFailed) {
  Three three;
  three.b.draw = [](unsigned char* bytes, std::size_t size) {
    std::memset(bytes, 7, size);
    return false;
  };
  rng::CombinedRng combined(three.Named(), 2);
  Bytes bytes(32);
  EXPECT_TRUE(combined.Generate(bytes.data(), bytes.size()));
  EXPECT_EQ(DrawOf({three.a.Named(), three.c.Named("serial")}), bytes);
}

// With XOR the result would be zero, whatever the good source gives.
TEST(CombinedBytes, StayRandomIfOneSourceCopiesAnother) {
  std::set<Bytes> results;
  for (unsigned seed = 1; seed <= 50; ++seed) {
    FakeSource good("unixdev", seed);
    FakeSource copy("dsdr", seed);
    results.insert(DrawOf({good.Named(), copy.Named()}));
    results.insert(DrawOf({good.Named()}));
  }
  EXPECT_EQ(100U, results.size());  // the good source still decides
  EXPECT_EQ(0U, results.count(Bytes(32)));
}

TEST(CombinedBytes, StayRandomIfTheBytesOfOneSourceAreKnown) {
  std::set<Bytes> results;
  FakeSource known("dsdr", 7);
  for (unsigned seed = 1; seed <= 50; ++seed) {
    FakeSource good("unixdev", seed);
    results.insert(DrawOf({good.Named(), known.Named()}));
    results.insert(DrawOf({known.Named(), good.Named()}));
  }
  EXPECT_EQ(100U, results.size());
}

TEST(CombinedDraw, Takes64FreshBytesFromEachSource) {
  Three three;
  rng::CombinedRng combined(three.Named());
  Bytes bytes(100000);
  EXPECT_TRUE(combined.Generate(bytes.data(), 1));
  EXPECT_TRUE(combined.Generate(bytes.data(), bytes.size()));
  for (const FakeSource* source : {&three.a, &three.b, &three.c}) {
    EXPECT_THAT(source->sizes, testing::ElementsAre(64U, 64U));
  }
}

TEST(CombinedDraw, SelectsTheDeviceEachTime) {
  Three three;
  rng::CombinedRng combined(three.Named());
  Bytes bytes(8);
  combined.Generate(bytes.data(), bytes.size());
  combined.Generate(bytes.data(), bytes.size());
  EXPECT_THAT(three.c.selected, testing::ElementsAre("serial", "serial"));
  EXPECT_THAT(three.a.selected, testing::IsEmpty());
}
