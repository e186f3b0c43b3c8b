// What is secret leaves the memory when its object ends.

#include "helpers/gathering/gathering.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <new>

namespace {

// How many bytes other than zero are where an object was.
template <typename Object, typename... Arguments>
std::ptrdiff_t CountLeft(const Arguments&... arguments) {
  alignas(Object) unsigned char place[sizeof(Object)] = {};
  Object* const object = new (place) Object{arguments...};
  if constexpr (std::is_same_v<Object, SystemBytes>) object->fill(1);
  object->~Object();
  asm volatile("" ::"r"(place) : "memory");  // read what is there
  return std::count_if(std::begin(place), std::end(place),
                       [](unsigned char byte) { return byte != 0; });
}

}  // namespace

TEST(Wiping, OfTheSystemsBytes) { EXPECT_EQ(0, CountLeft<SystemBytes>()); }

TEST(Wiping, OfTheGenerator) {
  EXPECT_EQ(0, CountLeft<HmacDrbg>(std::string(32, 'e'), std::string("nonce")));
}

TEST(Wiping, OfTheHashFunctions) {
  EXPECT_EQ(0, CountLeft<Sha256>());
  EXPECT_EQ(0, CountLeft<Sha512>());
}
