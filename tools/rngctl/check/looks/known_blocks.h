#ifndef TOOLS_RNGCTL_CHECK_LOOKS_KNOWN_BLOCKS_H
#define TOOLS_RNGCTL_CHECK_LOOKS_KNOWN_BLOCKS_H

#include "tools/rngctl/check/looks/draws_of_size.h"
#include "tools/rngctl/check/looks/sip_hash.h"

#include <optional>
#include <string>
#include <unordered_map>

/// The blocks of 16 bytes that were drawn, each at a multiple of 16 bytes from the beginning of its draw.
///
/// A perfect source repeats none. Only hashes are kept and handed to another process. The key is new in
/// each run, so they tell nothing about the bytes.
class KnownBlocks {
 public:
  explicit KnownBlocks(const SipKey& hashKey) : key(hashKey) {}

  /// Adds the blocks of these draws. A block that equals an earlier one is a fault.
  std::optional<Fault> Add(const DrawsOfSize& drawn);

  /// Looks at every place of these draws for a known block, and adds none. `when` begins the sentence:
  /// "After a second start it repeats what it drew after the first".
  std::optional<Fault> Find(const DrawsOfSize& drawn, const std::string& when) const;

  /// The hashes, for another process; those of large draws are left out.
  std::string Hashes() const { return hashes; }
  /// Adds those of an earlier process.
  void AddEarlier(const std::string& earlier);

 private:
  struct Place {
    std::size_t size;
    std::size_t number;
    std::size_t begin;
  };
  std::uint64_t Hash(const Bytes& bytes, std::size_t begin) const;

  const SipKey key;
  std::unordered_map<std::uint64_t, Place> places = {};
  std::string hashes = {};
};

#endif
