#include "tests/quality/peers/streams.h"

#include "quality/block_limits.h"
#include "quality/blocks.h"
#include "tests/quality/peers/bits.h"
#include "tests/quality/peers/limits.h"

#include <algorithm>

namespace {

using NextByte = std::function<unsigned char(Dice&, std::size_t place)>;

Stream ByBytes(const std::string& name, const NextByte& next) {
  return {name, [next](std::size_t blocks) {
            Dice dice;
            Bytes bytes(blocks * kBlockSize);
            for (std::size_t place = 0; place < bytes.size(); ++place)
              bytes[place] = next(dice, place);
            return bytes;
          }};
}

unsigned char Good(Dice& dice) { return static_cast<unsigned char>(dice.Draw() >> 56); }

unsigned char Low(std::uint64_t number) { return static_cast<unsigned char>(number); }

// Each bit depends on the one before it, or on nothing if both probabilities are the same.
Stream ByBits(const std::string& name, double oneAfterZero, double oneAfterOne) {
  return {name, [=](std::size_t blocks) {
            Dice dice;
            BitWriter bits(blocks * kBlockSize);
            for (bool bit = false; !bits.IsFull(); bits.Add(bit)) {
              bit = dice.Happens(bit ? oneAfterOne : oneAfterZero);
            }
            return bits.Take();
          }};
}

void AddBits(std::vector<Stream>& streams) {
  for (const int thousandth : {480, 486, 490, 510, 514, 520, 600}) {
    const double one = thousandth / 1000.0;
    streams.push_back(ByBits("ones_" + std::to_string(thousandth), one, one));
  }
  for (const int thousandth : {470, 485, 515, 530, 600}) {
    const double same = thousandth / 1000.0;
    streams.push_back(ByBits("same_" + std::to_string(thousandth), 1 - same, same));
  }
}

// Sources that count, print, or repeat themselves.
void AddSimple(std::vector<Stream>& streams) {
  const auto add = [&streams](const std::string& name, const NextByte& next) {
    streams.push_back(ByBytes(name, next));
  };
  add("zeros", [](Dice&, std::size_t) { return 0; });
  add("all_ones", [](Dice&, std::size_t) { return 0xFF; });
  add("alternating", [](Dice&, std::size_t) { return 0xAA; });
  add("counter_8", [](Dice&, std::size_t place) { return Low(place); });
  add("counter_16",
      [](Dice&, std::size_t place) { return Low(place % 2 ? place / 512 : place / 2); });
  add("counter_32", [](Dice&, std::size_t place) { return Low(place / 4 >> 8 * (place % 4)); });
  add("period_7", [](Dice&, std::size_t place) { return Low(place % 7 * 37); });
  add("period_251", [](Dice&, std::size_t place) { return Low(place % 251 * place % 251); });
  add("ascii", [](Dice& dice, std::size_t) { return Low(32 + dice.Below(95)); });
  add("hexadecimal", [](Dice& dice, std::size_t) { return "0123456789abcdef"[dice.Below(16)]; });
}

// Good bytes in which something is wrong.
void AddDefects(std::vector<Stream>& streams) {
  const auto add = [&streams](const std::string& name, const NextByte& next) {
    streams.push_back(ByBytes(name, next));
  };
  for (const unsigned bit : {0U, 3U, 7U}) {
    add("stuck_bit_" + std::to_string(bit),
        [bit](Dice& dice, std::size_t) { return Low(Good(dice) | 1U << bit); });
  }
  add("seven_bits", [](Dice& dice, std::size_t) { return Low(Good(dice) & 0x7F); });
  add("rarely_zero",
      [](Dice& dice, std::size_t) { return std::max<unsigned char>(Good(dice), 1); });
  for (const std::size_t percent : {2, 3, 5}) {
    add("zero_digits_" + std::to_string(percent), [percent](Dice& dice, std::size_t) {
      return dice.Below(100) < percent ? Low(Good(dice) & 0x0F) : Good(dice);
    });
  }
  add("half_zeros", [](Dice& dice, std::size_t place) {
    return place % 64 < 32 ? Good(dice) : static_cast<unsigned char>(0);
  });
  add("zeros_at_times", [](Dice& dice, std::size_t place) {
    return place % 5000 < 3 ? static_cast<unsigned char>(0) : Good(dice);
  });
  add("words_twice", [word = 0U](Dice& dice, std::size_t place) mutable {
    if (place % 8 == 0) word = static_cast<unsigned>(dice.Draw());
    return Low(word >> 8 * (3 - place % 4));
  });
}

// Simple generators of numbers, seeded anew in each run of the case.
void AddGenerators(std::vector<Stream>& streams) {
  const auto add = [&streams](const std::string& name,
                              std::function<std::uint64_t(std::uint64_t)> next, int shift) {
    streams.push_back({name, [next, shift](std::size_t blocks) {
                         std::uint64_t state = 1;
                         Bytes bytes(blocks * kBlockSize);
                         for (unsigned char& byte : bytes)
                           byte = Low((state = next(state)) >> shift);
                         return bytes;
                       }});
  };
  const auto congruential = [](std::uint64_t state) {
    return (state * 1103515245 + 12345) % (1UL << 31);
  };
  add("congruential_low", congruential, 0);
  add("congruential_middle", congruential, 12);
  add("congruential_high", congruential, 23);
  add(
      "multiplied_by_65539", [](std::uint64_t state) { return state * 65539 % (1UL << 31); }, 16);
  add(
      "shift_register", [](std::uint64_t state) { return state >> 1 ^ (state & 1 ? 0xB400U : 0); },
      0);
}

}  // namespace

std::vector<Stream> AllStreams() {
  std::vector<Stream> streams;
  streams.push_back(ByBytes("good", [](Dice& dice, std::size_t) { return Good(dice); }));
  streams.push_back(ByBytes("good_low", [](Dice& dice, std::size_t) { return Low(dice.Draw()); }));
  AddBits(streams);
  AddSimple(streams);
  AddDefects(streams);
  AddGenerators(streams);
  AddLimits(streams);
  return streams;
}
