#include "tools/rngctl/check/looks/known_blocks.h"

#include <cstring>

namespace {

constexpr std::size_t kBlock = 16;

// The hashes for another process must fit into a socket, because they are sent before anybody reads them.
constexpr std::size_t kLargestHandedOn = 4096;

constexpr char kSeedFix[] =
    "Seed any software generator with new bytes at each start, from a source such as getrandom().";

}  // namespace

std::uint64_t KnownBlocks::Hash(const Bytes& bytes, std::size_t begin) const {
  return SipHash(key, &bytes[begin], kBlock);
}

// Two hashes are equal with a probability of 2^-64, because the blocks are (2^-128) or by chance. The 32,662
// blocks of all draws are 5.3 * 10^8 pairs: 2.9 * 10^-11.
std::optional<Fault> KnownBlocks::Add(const DrawsOfSize& drawn) {
  for (std::size_t number = 0; number < drawn.draws.size(); ++number) {
    const Bytes& bytes = drawn.draws[number].after;
    for (std::size_t begin = 0; begin + kBlock <= bytes.size(); begin += kBlock) {
      const std::uint64_t hash = Hash(bytes, begin);
      const auto [known, isNew] = places.try_emplace(hash, Place{drawn.size, number, begin});
      if (!isNew) {
        const Place& place = known->second;
        return Fault{"In " + DrawInWords(number, drawn.size) + ", " +
                         InWords({begin, begin + kBlock}) + " repeat " +
                         InWords({place.begin, place.begin + kBlock}) + " of " +
                         DrawInWords(place.number, place.size) + ".",
                     "Never return the same bytes twice: use a source or generator without a short "
                     "period, and take new bytes from it for each draw."};
      }
      if (drawn.size > kLargestHandedOn) continue;
      hashes.append(reinterpret_cast<const char*>(&hash), sizeof hash);
    }
  }
  return std::nullopt;
}

// The 3,507 places of a later start and the 32,662 blocks of the first are 1.1 * 10^8 pairs: 6.2 * 10^-12.
// For another process, which has no more than 2,037 blocks to compare with, it is less.
std::optional<Fault> KnownBlocks::Find(const DrawsOfSize& drawn, const std::string& when) const {
  for (std::size_t number = 0; number < drawn.draws.size(); ++number) {
    const Bytes& bytes = drawn.draws[number].after;
    for (std::size_t begin = 0; begin + kBlock <= bytes.size(); ++begin) {
      if (!places.contains(Hash(bytes, begin))) continue;
      return Fault{when + ": " + InWords({begin, begin + kBlock}) + " of " +
                       DrawInWords(number, drawn.size) + ".",
                   kSeedFix};
    }
  }
  return std::nullopt;
}

void KnownBlocks::AddEarlier(const std::string& earlier) {
  std::uint64_t hash = 0;
  for (std::size_t i = 0; i + sizeof hash <= earlier.size(); i += sizeof hash) {
    std::memcpy(&hash, &earlier[i], sizeof hash);
    places.try_emplace(hash, Place{});
  }
}
