#include "tests/quality/sources.h"
#include "tools/rngctl/check/looks/faults.h"
#include "tools/rngctl/check/looks/known_blocks.h"

#include <functional>
#include <gmock/gmock.h>
#include <numeric>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr std::size_t kSizes[] = {1, 2, 15, 16, 17, 32, 255, 256, 4096, 70000};
constexpr SipKey kKey = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

using Spoil = std::function<void(DrawnBytes& draw)>;

void LeaveAlone(DrawnBytes&) {}

DrawsOfSize Draws(std::size_t size, const Spoil& spoil = LeaveAlone, std::uint64_t seed = 1) {
  DrawsOfSize drawn{size};
  for (std::uint64_t i = 0; i < kDrawsOfSize; ++i) {
    drawn.draws.push_back(
        {GoodBytes(size, 1000 * seed + i), GoodBytes(size, 1000 * seed + 500 + i)});
    spoil(drawn.draws.back());
  }
  return drawn;
}

// The first fault that the check would report.
std::string Found(const DrawsOfSize& drawn) {
  for (const auto find : {FindUnwritten, FindConstant, FindPattern, FindBias}) {
    if (find != FindUnwritten && drawn.size < kSmallestJudged) continue;
    if (const auto fault = find(drawn)) return fault->found;
  }
  return "";
}

std::string FoundBy(std::optional<Fault> (*find)(const DrawsOfSize&), const DrawsOfSize& drawn) {
  const auto fault = find(drawn);
  return fault ? fault->found : "";
}

std::string FoundOf(const std::optional<Fault>& fault) { return fault ? fault->found : ""; }

// Leaves these bytes unwritten.
Spoil Leave(std::size_t begin, std::size_t end) {
  return [begin, end](DrawnBytes& draw) {
    std::copy(&draw.before[begin], &draw.before[0] + end, &draw.after[begin]);
  };
}

// Applies it to one of the draws, counted from 1.
Spoil Only(int which, const Spoil& spoil) {
  return [which, spoil, number = 0](DrawnBytes& draw) mutable {
    if (++number == which) spoil(draw);
  };
}

Spoil OnlyThird(const Spoil& spoil) { return Only(3, spoil); }

Spoil ForEach(const std::function<unsigned(unsigned byte)>& change) {
  return [change](DrawnBytes& draw) {
    for (unsigned char& byte : draw.after) byte = static_cast<unsigned char>(change(byte));
  };
}

}  // namespace

TEST(SipHash, GivesThePublishedResults) {
  Bytes bytes(16);
  std::iota(bytes.begin(), bytes.end(), 0);
  EXPECT_EQ(0x726fdb47dd0e0e31U, SipHash(kKey, bytes.data(), 0));
  EXPECT_EQ(0x93f5f5799a932462U, SipHash(kKey, bytes.data(), 8));
  EXPECT_EQ(0xa129ca6149be45e5U, SipHash(kKey, bytes.data(), 15));
  EXPECT_EQ(0x3f2acc7f57c29bdbU, SipHash(kKey, bytes.data(), 16));
}

TEST(Looks, GoodBytesHaveNoFault) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    KnownBlocks blocks(kKey);
    for (const std::size_t size : kSizes) {
      const DrawsOfSize drawn = Draws(size, LeaveAlone, size * 100 + seed);
      EXPECT_EQ("", Found(drawn)) << size;
      EXPECT_EQ("", FoundOf(blocks.Add(drawn))) << size;
    }
  }
}

TEST(Looks, AnUnwrittenTailIsFoundAtEverySize) {
  for (const std::size_t size : kSizes) {
    for (std::size_t tail = 1; tail <= std::min<std::size_t>(3, size); ++tail) {
      const std::string place = InWords({size - tail, size});
      EXPECT_THAT(Found(Draws(size, Leave(size - tail, size))),
                  AllOf(StartsWith("None of seven draws of " + std::to_string(size)),
                        HasSubstr(" writes " + place + ": ")));
    }
  }
}

TEST(Looks, SixDrawsCannotShowThatAByteIsNeverWritten) {
  DrawsOfSize drawn = Draws(16, Leave(13, 16));
  drawn.draws.pop_back();
  EXPECT_EQ("", Found(drawn));
}

TEST(Looks, EightUnwrittenBytesOfOneDrawAreEnough) {
  EXPECT_EQ("In the third draw of 255 bytes, bytes 101 to 108 still have their old values.",
            Found(Draws(255, OnlyThird(Leave(100, 108)))));
  EXPECT_EQ("In the third draw of 255 bytes, bytes 248 to 255 still have their old values.",
            Found(Draws(255, OnlyThird(Leave(247, 255)))));
  EXPECT_EQ("", Found(Draws(255, OnlyThird(Leave(100, 107)))));
}

TEST(Looks, TheFirstAndTheLastDrawAreLookedAtToo) {
  const auto repeat = [](DrawnBytes& draw) { std::fill_n(&draw.after[20], 9, draw.after[20]); };
  for (const auto& [which, name] : {std::pair{1, "first"}, {7, "seventh"}}) {
    const auto draw = std::string("In the ") + name + " draw of 255 bytes, ";
    EXPECT_EQ(draw + "bytes 101 to 108 still have their old values.",
              Found(Draws(255, Only(which, Leave(100, 108)))));
    EXPECT_EQ(draw + "bytes 21 to 29 are all equal.", Found(Draws(255, Only(which, repeat))));
  }
}

TEST(Looks, AHalfOfZerosIsFoundAtEveryLargerSize) {
  for (const std::size_t size : kSizes) {
    const auto spoil = [size](DrawnBytes& draw) {
      std::fill(draw.after.begin() + static_cast<std::ptrdiff_t>(size / 2), draw.after.end(), 0);
    };
    const std::string found = "All seven draws of " + std::to_string(size) +
                              " bytes have zeros in " + InWords({size / 2, size}) + ".";
    EXPECT_EQ(size < kSmallestJudged ? "" : found, Found(Draws(size, spoil)));
  }
}

TEST(Looks, AByteThatNeverChangesIsFound) {
  const auto spoil = [](DrawnBytes& draw) { draw.after[4] = 7; };
  EXPECT_EQ("The seven draws of 17 bytes do not differ in byte 5.", Found(Draws(17, spoil)));
  DrawsOfSize six = Draws(17, spoil);
  six.draws.pop_back();
  EXPECT_EQ("", Found(six));
}

TEST(Looks, NineEqualBytesAreFoundAsAWholeRun) {
  const auto repeat = [](std::size_t count) {
    return OnlyThird([count](DrawnBytes& draw) {
      std::fill_n(draw.after.begin() + 100, count, draw.after[100]);
    });
  };
  EXPECT_EQ("", Found(Draws(255, repeat(8))));
  EXPECT_EQ("In the third draw of 255 bytes, bytes 101 to 109 are all equal.",
            Found(Draws(255, repeat(9))));
  EXPECT_EQ("In the third draw of 255 bytes, bytes 101 to 255 are all equal.",
            Found(Draws(255, repeat(155))));
}

TEST(Looks, TenBytesThatCountAreFound) {
  const auto count = [](std::size_t bytes) {
    return OnlyThird([bytes](DrawnBytes& draw) {
      for (std::size_t i = 1; i < bytes; ++i) {
        draw.after[i] = static_cast<unsigned char>(draw.after[i - 1] + 3);
      }
    });
  };
  EXPECT_EQ("", Found(Draws(16, count(9))));
  EXPECT_THAT(Found(Draws(16, count(10))),
              StartsWith("In the third draw of 16 bytes, bytes 1 to 10 are a counter: "));
}

// Only equal differences in a row count, not those that are frequent or repeat.
TEST(Looks, DifferencesMayRepeatOtherwise) {
  const auto prefer = OnlyThird([](DrawnBytes& draw) {
    for (std::size_t i = 1; i < 120; i += 3) {
      draw.after[i] = static_cast<unsigned char>(draw.after[i - 1] + 3);
    }
  });
  EXPECT_EQ("", FoundBy(FindPattern, Draws(255, prefer)));
  const auto shift = OnlyThird([](DrawnBytes& draw) {
    for (std::size_t i = 16; i < 48; ++i) {
      draw.after[i] = static_cast<unsigned char>(draw.after[i - 16] + 1);
    }
  });
  EXPECT_EQ("", FoundBy(FindPattern, Draws(255, shift)));
}

TEST(Looks, RepeatedBytesAreFoundAtAnyPlace) {
  const auto repeat =
      OnlyThird([](DrawnBytes& draw) { std::copy_n(&draw.after[101], 16, &draw.after[117]); });
  EXPECT_EQ("In the third draw of 255 bytes, bytes 118 to 133 repeat the 16 bytes before them.",
            Found(Draws(255, repeat)));
}

TEST(Looks, AValueThatComesTooOftenIsFound) {
  // Every tenth byte is the first of its window.
  const auto prefer = OnlyThird([](DrawnBytes& draw) {
    for (std::size_t i = 512; i < 1024; i += 10) draw.after[i] = draw.after[512];
  });
  const std::string found = Found(Draws(4096, prefer));
  EXPECT_THAT(found, StartsWith("In the third draw of 4096 bytes, 23 of bytes 513 to 7"));
  EXPECT_THAT(found, HasSubstr(" have the same value."));
}

TEST(Looks, BitsThatAreStuckAreFoundAtEveryLargerSize) {
  for (const std::size_t size : {15, 16, 17, 32, 255, 256, 4096}) {
    const std::string all = "In the " + std::to_string(7 * size) + " bytes of the draws of " +
                            std::to_string(size) + " bytes, the bit ";
    EXPECT_EQ(all + "0x80 is always 0.",
              Found(Draws(size, ForEach([](unsigned byte) { return byte & 0x7FU; }))));
    EXPECT_EQ(all + "0x08 is always 1.",
              Found(Draws(size, ForEach([](unsigned byte) { return byte | 0x08U; }))));
  }
}

// Among 105 fair bits, 17 ones or a more extreme number have a probability of 9.95 * 10^-13, and 18 ones
// 4.9 * 10^-12.
TEST(Looks, ABitMayBeOneAsOftenAsChanceAllows) {
  const auto haveOnes = [](std::size_t count) {
    return [left = count](DrawnBytes& draw) mutable {
      for (unsigned char& byte : draw.after) {
        byte = static_cast<unsigned char>((byte & 0xFEU) | (left > 0 ? 1U : 0U));
        left -= left > 0 ? 1 : 0;
      }
    };
  };
  EXPECT_EQ("In the 105 bytes of the draws of 15 bytes, the bit 0x01 is 1 in 16.2 %.",
            FoundBy(FindBias, Draws(15, haveOnes(17))));
  EXPECT_EQ("", FoundBy(FindBias, Draws(15, haveOnes(18))));
}

TEST(Looks, TextIsFound) {
  EXPECT_EQ("All 112 bytes of the draws of 16 bytes are printable ASCII characters.",
            Found(Draws(16, ForEach([](unsigned byte) { return ' ' + byte % 95; }))));
  EXPECT_THAT(Found(Draws(255, ForEach([](unsigned byte) { return ' ' + byte % 96; }))),
              HasSubstr(", the bit 0x"));
}

TEST(Looks, LinesOfTextAreText) {
  const auto end = [number = 0](DrawnBytes& draw) mutable {
    for (unsigned char& byte : draw.after) byte = static_cast<unsigned char>(' ' + byte % 95);
    draw.after[14] = number++ % 2 == 0 ? '\r' : '\n';
  };
  EXPECT_EQ("All 112 bytes of the draws of 16 bytes are printable ASCII characters.",
            FoundBy(FindBias, Draws(16, end)));
}

// A perfect source does that once in two million times.
TEST(Looks, ADrawOf15PrintableBytesMayBeChance) {
  DrawsOfSize drawn = Draws(15, ForEach([](unsigned byte) { return ' ' + byte % 95; }));
  drawn.draws.resize(1);
  EXPECT_EQ("", FoundBy(FindBias, drawn));
}

TEST(Looks, OfSeveralBitsTheWorstIsNamed) {
  const auto lean = [number = 0U](DrawnBytes& draw) mutable {
    for (unsigned char& byte : draw.after) {
      if (++number % 16 != 0) byte &= 0xFDU;
      if (number % 4 == 0) byte |= 0x40U;
    }
  };
  EXPECT_THAT(FoundBy(FindBias, Draws(255, lean)), HasSubstr(", the bit 0x02 is 1 in "));
}

TEST(Looks, ValuesThatAreNotEquallyFrequentAreFound) {
  EXPECT_THAT(
      Found(Draws(70000, ForEach([](unsigned byte) { return byte % 255; }))),
      AllOf(HasSubstr("490000 bytes of the draws of 70000 bytes, the 256 values are not equally"),
            HasSubstr("the rarest occurs 0 times")));
}

TEST(Looks, ValuesThatAreTooEquallyFrequentAreFound) {
  const auto number = [place = 0U](DrawnBytes& draw) mutable {
    for (unsigned char& byte : draw.after) byte = static_cast<unsigned char>(37 * place++);
  };
  EXPECT_EQ(
      "In the 28672 bytes of the draws of 4096 bytes, the 256 values are closer to equally "
      "frequent than chance allows: the rarest occurs 112 times, the most frequent 112 times.",
      FoundBy(FindBias, Draws(4096, number)));
}

TEST(KnownBlocks, ABlockMayComeOnce) {
  DrawsOfSize drawn = Draws(255);
  std::copy_n(&drawn.draws[1].after[32], 16, &drawn.draws[4].after[224]);
  KnownBlocks blocks(kKey);
  EXPECT_EQ(
      "In the fifth draw of 255 bytes, bytes 225 to 240 repeat bytes 33 to 48 of the second draw "
      "of "
      "255 bytes.",
      FoundOf(blocks.Add(drawn)));
}

TEST(KnownBlocks, DifferIfOneByteDoes) {
  for (std::size_t place = 0; place < 16; ++place) {
    DrawsOfSize drawn = Draws(16);
    drawn.draws[4].after = drawn.draws[1].after;
    ++drawn.draws[4].after[place];
    EXPECT_EQ("", FoundOf(KnownBlocks(kKey).Add(drawn))) << place;
  }
}

TEST(KnownBlocks, DrawsOfOtherSizesCount) {
  KnownBlocks blocks(kKey);
  const DrawsOfSize small = Draws(16);
  DrawsOfSize large = Draws(70000, LeaveAlone, 2);
  large.draws[6].after.resize(69984);
  large.draws[6].after.insert(large.draws[6].after.end(), small.draws[0].after.begin(),
                              small.draws[0].after.end());
  EXPECT_EQ("", FoundOf(blocks.Add(small)));
  EXPECT_EQ(
      "In the seventh draw of 70000 bytes, bytes 69985 to 70000 repeat bytes 1 to 16 of the first "
      "draw of 16 bytes.",
      FoundOf(blocks.Add(large)));
}

TEST(KnownBlocks, AreFoundAgainAtAnyPlace) {
  KnownBlocks blocks(kKey);
  const DrawsOfSize first = Draws(256);
  ASSERT_EQ("", FoundOf(blocks.Add(first)));
  DrawsOfSize later = Draws(17, LeaveAlone, 2);
  EXPECT_EQ("", FoundOf(blocks.Find(later, "Later")));
  std::copy_n(&first.draws[6].after[240], 16, &later.draws[2].after[1]);
  EXPECT_EQ("Later: bytes 2 to 17 of the third draw of 17 bytes.",
            FoundOf(blocks.Find(later, "Later")));
}

TEST(KnownBlocks, AreFoundInAnotherProcess) {
  const DrawsOfSize drawn = Draws(4096);
  KnownBlocks first(kKey);
  first.Add(drawn);
  EXPECT_EQ(7U * 256U * 8U, first.Hashes().size());
  KnownBlocks second(kKey);
  second.AddEarlier(first.Hashes());
  EXPECT_EQ("Later: bytes 1 to 16 of the first draw of 4096 bytes.",
            FoundOf(second.Find(drawn, "Later")));
  DrawsOfSize last = Draws(16, LeaveAlone, 2);
  last.draws[0].after.assign(drawn.draws[6].after.end() - 16, drawn.draws[6].after.end());
  EXPECT_NE("", FoundOf(second.Find(last, "Later")));
  SipKey otherKey = kKey;
  otherKey[0] = 1;
  KnownBlocks other(otherKey);
  other.AddEarlier(first.Hashes());
  EXPECT_EQ("", FoundOf(other.Find(drawn, "Later")));
}

// They are sent before anybody reads them.
TEST(KnownBlocks, OfLargeDrawsAreNotHandedOn) {
  KnownBlocks blocks(kKey);
  blocks.Add(Draws(70000));
  EXPECT_EQ("", blocks.Hashes());
}
