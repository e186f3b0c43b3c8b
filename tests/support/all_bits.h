#ifndef TESTS_SUPPORT_ALL_BITS_H
#define TESTS_SUPPORT_ALL_BITS_H

#include <cstdint>

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;  ///< the mask that every capability matches

#endif
