#ifndef TOOLS_RNGCTL_CHECK_LOOKS_SIP_HASH_H
#define TOOLS_RNGCTL_CHECK_LOOKS_SIP_HASH_H

#include <array>
#include <cstddef>
#include <cstdint>

using SipKey = std::array<unsigned char, 16>;

/// SipHash-2-4: a keyed pseudo-random function for short inputs. It was chosen because it is small, fast for
/// 16 bytes, and has published results to test it with. Without the key, a value tells nothing about
/// the bytes; two different inputs have the same value with a probability of 2^-64.
std::uint64_t SipHash(const SipKey& key, const void* bytes, std::size_t size);

#endif
