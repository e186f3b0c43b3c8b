// A source that cannot be used ends the draw, unless others are enough.

#include "tests/combine/fake_source.h"

#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using rng::CombinedSource;
using rng::SourceOutcome;
using rng::SourceResult;
using testing::Each;
using testing::IsEmpty;

struct NoText : std::exception {
  const char* what() const noexcept override { return nullptr; }
};

constexpr std::size_t kCount = 3;
const char* const kKinds[kCount] = {"unixdev", "dsdr", "Rutoken"};

struct Failure {
  SourceResult result;
  std::function<void(FakeSource&, CombinedSource&)> cause;
  std::string sentence;  // behind the name
};

void DrawsZeros(FakeSource& fake, CombinedSource&) {
  fake.draw = [](unsigned char* bytes, std::size_t size) {
    std::memset(bytes, 0, size);
    return true;
  };
}

// The last 16 bytes are those before them.
void DrawsARepetition(FakeSource& fake, CombinedSource&) {
  const auto before = fake.draw;
  fake.draw = [before](unsigned char* bytes, std::size_t size) {
    before(bytes, size);
    std::memcpy(bytes + size - 16, bytes + size - 32, 16);
    return true;
  };
}

void StopsShort(FakeSource& fake, CombinedSource&) {
  const auto before = fake.draw;
  fake.draw = [before](unsigned char* bytes, std::size_t size) { return before(bytes, size - 9); };
}

template <typename Thrown>
std::function<void(FakeSource&, CombinedSource&)> Throws(const Thrown& thrown) {
  return [thrown](FakeSource& fake, CombinedSource&) {
    fake.draw = [thrown](unsigned char* bytes, std::size_t size) -> bool {
      std::memset(bytes, 7, size);
      throw thrown;
    };
  };
}

const std::vector<Failure> kFailures = {
    {SourceResult::kMissing, [](FakeSource&, CombinedSource& named) { named.provider = nullptr; },
     " is not usable now."},
    {SourceResult::kOtherName, [](FakeSource& fake, CombinedSource&) { fake.name += "x"; },
     " reports another name, or none."},
    {SourceResult::kOtherName, [](FakeSource& fake, CombinedSource&) { fake.name.clear(); },
     " reports another name, or none."},
    {SourceResult::kDeviceRefused,
     [](FakeSource& fake, CombinedSource& named) {
       named.device = "serial";
       fake.acceptsDevices = false;
     },
     " refuses the device \"serial\"."},
    {SourceResult::kFailed,
     [](FakeSource& fake, CombinedSource&) {
       fake.draw = [](unsigned char* bytes, std::size_t size) {
         std::memset(bytes, 7, size);
         return false;
       };
     },
     " failed, or the draw was cancelled."},
    {SourceResult::kAlarm, DrawsZeros,
     " returned bytes that are not random (nine equal bytes in a row)."},
    {SourceResult::kAlarm, StopsShort,
     " returned bytes that are not random (nine equal bytes in a row)."},
    {SourceResult::kAlarm, DrawsARepetition,
     " returned bytes that are not random (16 bytes equal to the 16 before them)."},
    {SourceResult::kThrew, Throws(std::runtime_error("the cable is loose")),
     " threw an exception (the cable is loose)."},
    {SourceResult::kThrew, Throws(std::bad_alloc()), " threw an exception (std::bad_alloc)."},
    {SourceResult::kThrew, Throws(NoText()), " threw an exception."},
    {SourceResult::kThrew, Throws(7), " threw an exception."},
};

struct Sources {
  Sources() {
    for (std::size_t i = 0; i < kCount; ++i) {
      fakes.emplace_back(kKinds[i], static_cast<unsigned>(i + 1));
    }
    for (FakeSource& fake : fakes) named.push_back(fake.Named());
  }
  std::vector<FakeSource> fakes;
  std::vector<CombinedSource> named;
};

std::vector<SourceResult> ResultsOf(const std::vector<SourceOutcome>& outcomes) {
  std::vector<SourceResult> results;
  for (const SourceOutcome& outcome : outcomes) results.push_back(outcome.result);
  return results;
}

}  // namespace

TEST(CombinedDraw, FailsIfAnySourceFails) {
  for (const Failure& failure : kFailures) {
    for (std::size_t place = 0; place < kCount; ++place) {
      Sources sources;
      failure.cause(sources.fakes[place], sources.named[place]);
      rng::CombinedRng combined(sources.named);
      Bytes bytes(100, 0xAA);
      std::vector<SourceOutcome> outcomes;
      EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size(), outcomes)) << failure.sentence;
      EXPECT_THAT(bytes, Each(0)) << failure.sentence;
      std::vector<SourceResult> expected(kCount, SourceResult::kNotAsked);
      std::fill_n(expected.begin(), place, SourceResult::kUsed);
      expected[place] = failure.result;
      EXPECT_EQ(expected, ResultsOf(outcomes)) << failure.sentence;
      EXPECT_EQ("The generator \"" + std::string(kKinds[place]) + '"' + failure.sentence,
                Explain(outcomes[place]));
      for (std::size_t i = place + 1; i < kCount; ++i) {
        EXPECT_EQ("The generator \"" + std::string(kKinds[i]) +
                      "\" was not asked, because the draw had ended.",
                  Explain(outcomes[i]));
      }
    }
  }
}

TEST(CombinedDraw, LeavesOutASourceThatFailsIfTheOthersAreEnough) {
  for (const Failure& failure : kFailures) {
    for (std::size_t place = 0; place < kCount; ++place) {
      Sources sources;
      failure.cause(sources.fakes[place], sources.named[place]);
      rng::CombinedRng combined(sources.named, kCount - 1);
      std::vector<CombinedSource> others = sources.named;
      others.erase(others.begin() + static_cast<std::ptrdiff_t>(place));
      Bytes bytes(100, 0xAA);
      EXPECT_TRUE(combined.Generate(bytes.data(), bytes.size())) << failure.sentence;
      EXPECT_EQ(DrawOf(others, 100), bytes) << failure.sentence;
    }
  }
}

TEST(CombinedDraw, SucceedsIfAsManySourcesWorkAsAreNeeded) {
  for (unsigned works = 0; works < 1U << kCount; ++works) {
    for (std::size_t need = 1; need <= kCount; ++need) {
      Sources sources;
      std::vector<CombinedSource> working;
      for (std::size_t i = 0; i < kCount; ++i) {
        if (works >> i & 1)
          working.push_back(sources.named[i]);
        else
          sources.fakes[i].draw = [](unsigned char*, std::size_t) { return false; };
      }
      rng::CombinedRng combined(sources.named, need);
      Bytes bytes(32, 0xAA);
      const bool isEnough = working.size() >= need;
      EXPECT_EQ(isEnough, combined.Generate(bytes.data(), bytes.size())) << works << ' ' << need;
      EXPECT_EQ(isEnough ? DrawOf(working) : Bytes(32), bytes) << works << ' ' << need;
    }
  }
}

TEST(CombinedDraw, AsksNoMoreSourcesOnceItMustFail) {
  Sources sources;
  sources.fakes[0].draw = sources.fakes[1].draw = [](unsigned char*, std::size_t) { return false; };
  rng::CombinedRng combined(sources.named, 2);
  Bytes bytes(8);
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size()));
  EXPECT_THAT(sources.fakes[2].sizes, IsEmpty());
}

TEST(CombinedDraw, FailsAfterAnAlarmUntilReset) {
  Sources sources;
  const auto good = sources.fakes[1].draw;
  sources.named[1].device = "serial";
  DrawsZeros(sources.fakes[1], sources.named[1]);
  rng::CombinedRng combined(sources.named);
  Bytes bytes(8);
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size()));
  sources.fakes[1].draw = good;
  std::vector<SourceOutcome> outcomes;
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size(), outcomes));
  EXPECT_EQ(SourceResult::kAlarm, outcomes[1].result);
  EXPECT_EQ(RngHealthAlarm::kRepetition, outcomes[1].alarm);  // as in the draw that raised it
  EXPECT_EQ(1U, sources.fakes[1].sizes.size());
  EXPECT_EQ(1U, sources.fakes[1].selected.size());
  combined.Reset();
  EXPECT_TRUE(combined.Generate(bytes.data(), bytes.size()));
}

TEST(CombinedDraw, SucceedsAfterOneThatFailed) {
  Sources sources;
  const auto good = sources.fakes[0].draw;
  sources.fakes[0].draw = [](unsigned char*, std::size_t) { return false; };
  rng::CombinedRng combined(sources.named);
  Bytes bytes(32);
  std::vector<SourceOutcome> outcomes;
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size(), outcomes));
  sources.fakes[0].draw = good;
  EXPECT_TRUE(combined.Generate(bytes.data(), bytes.size(), outcomes));
  EXPECT_EQ(DrawOf(sources.named), bytes);
  EXPECT_EQ(std::vector<SourceResult>(kCount, SourceResult::kUsed), ResultsOf(outcomes));
  EXPECT_EQ("", Explain(outcomes[0]));
}

TEST(CombinedDraw, OfZeroBytesAsksNoSource) {
  Sources sources;
  sources.fakes[0].draw = [](unsigned char*, std::size_t) { return false; };
  sources.named[1].provider = nullptr;
  rng::CombinedRng combined(sources.named);
  std::vector<SourceOutcome> outcomes;
  EXPECT_TRUE(combined.Generate(nullptr, 0, outcomes));
  EXPECT_THAT(ResultsOf(outcomes), Each(SourceResult::kNotAsked));
  EXPECT_THAT(sources.fakes[0].sizes, IsEmpty());
}
