// Long use of the provider. RNG_OPENSSL_TIMES makes each case longer by that factor.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

int Times(int count) {
  const char* const factor = std::getenv("RNG_OPENSSL_TIMES");
  return count * (factor ? std::atoi(factor) : 1);
}

class Growth : public OpensslTest {
 protected:
  static void ExpectNone(const std::string& use) {
    constexpr long kMostKiB = 256;  // a few pages in all, but none for each use
    const Result result = Run(GROWTH " " + use);
    std::cout << use << ": " << result.output;
    long processes = 0, descriptors = 0, size = 0;
    ASSERT_EQ(3, std::sscanf(result.output.c_str(), "%ld processes, %ld descriptors, %ld KiB",
                             &processes, &descriptors, &size))
        << result.errors;
    EXPECT_EQ(0, processes);
    EXPECT_EQ(0, descriptors);
    EXPECT_GE(kMostKiB, size);
    EXPECT_TRUE(AllHelpersExit());
  }
};

class ManyPrograms : public OpensslTest {};

}  // namespace

TEST_F(Growth, OfDraws) { ExpectNone("draws " + std::to_string(Times(5000))); }
TEST_F(Growth, OfForks) { ExpectNone("forks " + std::to_string(Times(50))); }
TEST_F(Growth, OfContexts) {
  ExpectNone("contexts " + std::to_string(Times(15)) + " " + ConfigurationFile());
}

TEST_F(ManyPrograms, DrawAtTheSameTime) {
  const Result result =
      Run("seq " + std::to_string(Times(500)) + " | xargs -P 8 -I _ openssl rand -hex 16");
  EXPECT_EQ(0, result.status) << result.errors;
  std::istringstream lines(result.output);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count)
    ASSERT_TRUE(HasWatermark(line)) << line;
  std::cout << count << " programs drew\n";
  EXPECT_EQ(Times(500), count);
  EXPECT_TRUE(AllHelpersExit());
}
