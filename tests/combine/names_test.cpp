// What a source may say about its name: it is other people's code, and need not say the same twice.

#include "tests/combine/fake_source.h"

#include <gtest/gtest.h>

namespace {

using rng::SourceResult;

constexpr char kName[] = "unixdev";  // seven characters

// Each call without a buffer returns `first`, and each call with one copies `text` and returns `second`.
struct TalkingSource : SteadySource {
  TalkingSource(std::int32_t withoutBuffer, std::int32_t withBuffer,
                std::string copied = std::string(kName, sizeof kName))
      : SteadySource(kName, 1), first(withoutBuffer), second(withBuffer), text(std::move(copied)) {}

  std::int32_t GetName(char* buffer) override {
    if (!buffer) return first;
    ++copies;
    std::memcpy(buffer, text.data(), text.size());
    return second;
  }

  const std::int32_t first;
  const std::int32_t second;
  const std::string text;
  int copies = 0;
};

SourceResult ResultOf(TalkingSource& source) {
  rng::CombinedRng combined({source.Named()});
  Bytes bytes(8);
  std::vector<rng::SourceOutcome> outcomes;
  combined.Generate(bytes.data(), bytes.size(), outcomes);
  return outcomes[0].result;
}

SourceResult ResultOf(TalkingSource&& source) { return ResultOf(source); }

}  // namespace

TEST(SourceName, IsRefusedIfItsSizeChangesBetweenTwoCalls) {
  EXPECT_EQ(SourceResult::kUsed, ResultOf(TalkingSource(8, 8)));
  EXPECT_EQ(SourceResult::kOtherName, ResultOf(TalkingSource(8, 9)));
  EXPECT_EQ(SourceResult::kOtherName, ResultOf(TalkingSource(9, 8)));
  EXPECT_EQ(SourceResult::kOtherName, ResultOf(TalkingSource(8, 0)));
  EXPECT_EQ(SourceResult::kOtherName, ResultOf(TalkingSource(8, -1)));
}

// The buffer holds any permitted name, whatever size the first call returned.
TEST(SourceName, FitsTheBufferEvenIfItGrows) {
  EXPECT_EQ(SourceResult::kOtherName,
            ResultOf(TalkingSource(8, 251, kName + std::string(244, '\0'))));
}

TEST(SourceName, HasFrom1To256Bytes) {
  for (const std::int32_t size : {-2147483647 - 1, -1, 0, 257, 2147483647}) {
    TalkingSource source(size, size);
    EXPECT_EQ(SourceResult::kOtherName, ResultOf(source)) << size;
    EXPECT_EQ(0, source.copies) << size;
  }
  // The size is not compared with the name, which ends at its terminator.
  EXPECT_EQ(SourceResult::kUsed, ResultOf(TalkingSource(1, 1)));
  EXPECT_EQ(SourceResult::kUsed, ResultOf(TalkingSource(256, 256)));
}

TEST(SourceName, MayLackATerminator) {
  EXPECT_EQ(SourceResult::kUsed, ResultOf(TalkingSource(7, 7, kName)));
}

// Otherwise the draw would change the device of a generator that is not part of it.
TEST(SourceName, IsAskedForBeforeTheDeviceIsSelected) {
  FakeSource fake("unixdev");
  rng::CombinedRng combined({fake.Named("serial")});
  fake.name = "dsdr";
  Bytes bytes(8);
  EXPECT_FALSE(combined.Generate(bytes.data(), bytes.size()));
  EXPECT_TRUE(fake.selected.empty());
}
