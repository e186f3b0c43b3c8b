// The operations of the combination beside the draw.

#include "tests/combine/fake_source.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using rng::CombinedRng;
using rng::CombinedSource;

std::string TextOf(IRngProvider& provider, std::int32_t (IRngProvider::*operation)(char*)) {
  std::string text(static_cast<std::size_t>((provider.*operation)(nullptr)), '~');
  EXPECT_EQ(static_cast<std::int32_t>(text.size()), (provider.*operation)(text.data()));
  EXPECT_EQ('\0', text.back());
  text.pop_back();
  return text;
}

struct Pair {
  FakeSource one{"unixdev"};
  FakeSource other{"Rutoken", 2};
  CombinedRng both{{one.Named(), other.Named("3a2f01")}};
  CombinedRng either{{one.Named(), other.Named("3a2f01")}, 1};
};

}  // namespace

TEST(CombinedRng, ReportsItsNameAndItsSources) {
  Pair pair;
  EXPECT_EQ("combined", TextOf(pair.both, &IRngProvider::GetName));
  EXPECT_EQ("Several generators combined: unixdev Rutoken:3a2f01",
            TextOf(pair.both, &IRngProvider::GetDescription));
  EXPECT_EQ(0, pair.both.GetHardwareId(nullptr));
}

TEST(CombinedRng, AcceptsOnlyTheEmptyDevice) {
  Pair pair;
  EXPECT_FALSE(pair.both.SelectDevice("3a2f01"));
  EXPECT_TRUE(pair.both.SelectDevice(""));
  EXPECT_TRUE(pair.both.SelectDevice(nullptr));
  EXPECT_TRUE(pair.other.selected.empty());
}

TEST(CombinedRng, IsAvailableIfEnoughSourcesAre) {
  Pair pair;
  EXPECT_TRUE(pair.both.IsAvailable());
  pair.one.isAvailable = false;
  EXPECT_FALSE(pair.both.IsAvailable());
  EXPECT_TRUE(pair.either.IsAvailable());
  pair.other.isAvailable = false;
  EXPECT_FALSE(pair.either.IsAvailable());
}

TEST(CombinedRng, PassesItsSelfTestIfEnoughSourcesDo) {
  Pair pair;
  EXPECT_TRUE(pair.both.SelfTest());
  pair.other.passes = false;
  EXPECT_FALSE(pair.both.SelfTest());
  EXPECT_TRUE(pair.either.SelfTest());
}

TEST(CombinedRng, TestsAllSourcesEvenIfTheFirstDecides) {
  Pair pair;
  int tests = 0;
  pair.one.whenAsked = pair.other.whenAsked = [&tests] { ++tests; };
  EXPECT_TRUE(pair.either.SelfTest());
  EXPECT_EQ(2, tests);
  pair.one.passes = false;
  EXPECT_FALSE(pair.both.SelfTest());
  EXPECT_EQ(4, tests);
}

TEST(CombinedRng, TreatsAMissingSourceAsUnavailable) {
  FakeSource one;
  one.flags = kRngCapabilityHardware | kRngCapabilityMayBlock;
  CombinedRng both({one.Named(), CombinedSource("dsdr")});
  EXPECT_FALSE(both.IsAvailable());
  EXPECT_FALSE(both.SelfTest());
  EXPECT_EQ(one.flags, both.GetFlags());
  both.Cancel();
  CombinedRng none({CombinedSource("dsdr")});
  EXPECT_EQ(0U, none.GetFlags());
}

TEST(CombinedRng, MayWaitIfOneSourceMayAndIsHardwareIfAllAre) {
  Pair pair;
  pair.one.flags = kRngCapabilityHardware | kRngCapabilityOperatingSystem;
  pair.other.flags = kRngCapabilityHardware;
  EXPECT_EQ(kRngCapabilityHardware, pair.both.GetFlags());
  pair.other.flags |= kRngCapabilityNeedsUser;
  EXPECT_EQ(kRngCapabilityHardware | kRngCapabilityNeedsUser, pair.both.GetFlags());
  pair.one.flags = kRngCapabilityOperatingSystem | kRngCapabilityMayBlock;
  EXPECT_EQ(kRngCapabilityNeedsUser | kRngCapabilityMayBlock, pair.both.GetFlags());
}

TEST(CombinedRng, LeavesSetSettingsAndReleaseToTheAggregator) {
  Pair pair;
  pair.both.SetSettings(nullptr);
  pair.both.Release();
  EXPECT_EQ(0, pair.one.startUpCalls + pair.other.startUpCalls);
}

TEST(CombinedRng, TreatsASourceThatThrowsAsUnavailable) {
  Pair pair;
  pair.one.flags = kRngCapabilityMayBlock;
  pair.one.whenAsked = [] { throw 7; };
  EXPECT_FALSE(pair.both.IsAvailable());
  EXPECT_FALSE(pair.both.SelfTest());
  EXPECT_TRUE(pair.either.IsAvailable());
  EXPECT_TRUE(pair.either.SelfTest());
  EXPECT_EQ(0U, pair.both.GetFlags());
}

// --- Cancel

TEST(CombinedCancel, ReachesEverySourceEvenIfOneThrows) {
  Pair pair;
  int count = 0;
  pair.one.whenAsked = [&count] {
    ++count;
    throw std::runtime_error("broken");
  };
  pair.other.whenAsked = [&count] { ++count; };
  pair.both.Cancel();
  EXPECT_EQ(2, count);
}

TEST(CombinedCancel, EndsAWaitingDrawEvenIfAnotherSourceWouldBeEnough) {
  Pair pair;
  pair.one.draw = [&pair](unsigned char*, std::size_t) {
    pair.either.Cancel();
    return false;
  };
  Bytes bytes(8, 0xAA);
  EXPECT_FALSE(pair.either.Generate(bytes.data(), bytes.size()));
  EXPECT_EQ(Bytes(8), bytes);
  EXPECT_TRUE(pair.other.sizes.empty());
}

TEST(CombinedCancel, PreventsTheNextSourceFromWaiting) {
  Pair pair;
  const auto draw = pair.one.draw;
  pair.one.draw = [&pair, draw](unsigned char* bytes, std::size_t size) {
    pair.both.Cancel();
    return draw(bytes, size);
  };
  Bytes bytes(8);
  EXPECT_TRUE(pair.both.Generate(bytes.data(), bytes.size()));  // nothing would wait
  for (const std::uint32_t flag : {kRngCapabilityNeedsUser, kRngCapabilityMayBlock}) {
    pair.other.flags = flag;
    pair.other.sizes.clear();
    EXPECT_FALSE(pair.both.Generate(bytes.data(), bytes.size()));
    EXPECT_TRUE(pair.other.sizes.empty());
  }
}

TEST(CombinedCancel, ReportsAMissingSourceAsMissing) {
  FakeSource one;
  rng::CombinedRng combined{{one.Named(), rng::CombinedSource("dsdr", "", nullptr)}, 1};
  one.draw = [&combined, draw = one.draw](unsigned char* bytes, std::size_t size) {
    combined.Cancel();
    return draw(bytes, size);
  };
  Bytes bytes(8);
  std::vector<rng::SourceOutcome> outcomes;
  combined.Generate(bytes.data(), bytes.size(), outcomes);
  EXPECT_EQ(rng::SourceResult::kMissing, outcomes.at(1).result);
}

TEST(CombinedCancel, DoesNotAffectLaterDraws) {
  Pair pair;
  pair.one.flags = pair.other.flags = kRngCapabilityNeedsUser;
  pair.both.Cancel();
  Bytes bytes(8);
  EXPECT_TRUE(pair.both.Generate(bytes.data(), bytes.size()));
}
