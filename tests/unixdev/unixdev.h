#ifndef TESTS_UNIXDEV_UNIXDEV_H
#define TESTS_UNIXDEV_UNIXDEV_H

#include "tests/support/aggregator_library.h"
#include "tests/support/all_bits.h"
#include "tests/support/tree.h"
#include "tests/unixdev/kernel_calls.h"

#include <cstddef>
#include <filesystem>
#include <gmock/gmock.h>
#include <vector>

#include <rngaggregator/provider.h>

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kOld = 0xEE;
constexpr std::size_t kMebibyte = 1 << 20;

/// The plug-in, as a host has it after the start.
class UnixDev : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy(UNIXDEV_PLUGIN, TreePath("lib/librngunixdev.so"));
    library.Start(nullptr, 1);
    rng = library.GetRng("unixdev");
    ASSERT_NE(nullptr, rng);
  }

  /// A full stop without the counting of Start, for cases in which nothing may be listed.
  std::int32_t Restart(IRngSettings* settings = nullptr) {
    library.ShutDown();
    library.Initialize(settings);
    return library.GetAvailableRng(nullptr, kAllBits);
  }

  /// Draws into a buffer between two bytes that must stay.
  Bytes Draw(std::size_t size) {
    Bytes bytes(size + 2, kOld);
    EXPECT_TRUE(rng->Generate(bytes.data() + 1, size));
    EXPECT_EQ(kOld, bytes.front());
    EXPECT_EQ(kOld, bytes.back());
    return Bytes(bytes.begin() + 1, bytes.end() - 1);
  }

  void ExpectFailureLeavesZeroes(std::size_t size = 32) {
    Bytes bytes(size + 2, kOld);
    EXPECT_FALSE(rng->Generate(bytes.data() + 1, size));
    EXPECT_EQ(kOld, bytes.front());
    EXPECT_EQ(kOld, bytes.back());
    EXPECT_THAT(Bytes(bytes.begin() + 1, bytes.end() - 1), testing::Each(0));
  }

  const AggregatorLibrary library;
  IRngProvider* rng = nullptr;
};

#endif
