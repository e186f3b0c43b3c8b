// The self-test with parts that do not work.

// libcrypto deprecates SHA512_Final.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "helpers/gathering/self_test.h"

#include "helpers/gathering/key_credit.h"
#include "helpers/gathering/motion_credit.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <openssl/sha.h>

namespace {

bool g_hashIsWrong = false;

int g_keyCredit = 2;
std::int32_t g_bendStep = 0;
std::int32_t g_bend = 2;

}  // namespace

// The program has these in place of the real ones.
int KeyCredit::Take(const KeyPress&) { return g_keyCredit; }

std::optional<MotionCredit::Bend> MotionCredit::Take(const Motion&) {
  g_bend += g_bendStep;
  return Bend{g_bend, 0};
}

// The program calls this one instead of libcrypto's.
extern "C" [[gnu::visibility("default")]] int SHA512_Final(unsigned char* result,
                                                           SHA512_CTX* state) {
  static const auto next =
      reinterpret_cast<decltype(&SHA512_Final)>(::dlsym(RTLD_NEXT, "SHA512_Final"));
  const int isDone = next(result, state);
  if (g_hashIsWrong) result[0] ^= 1;
  return isDone;
}

TEST(GatheringSelfTest, PassesWhereAllPartsWork) { EXPECT_TRUE(TestGathering()); }

TEST(GatheringSelfTest, FailsWhereKeysGetNoCredit) {
  g_keyCredit = 0;
  EXPECT_FALSE(TestGathering());
}

TEST(GatheringSelfTest, FailsWhereRepetitionIsNotNoticed) {
  g_bendStep = 1;
  EXPECT_FALSE(TestGathering());
}

TEST(GatheringSelfTest, FailsWhereTheBytesAreOthers) {
  g_hashIsWrong = true;
  EXPECT_FALSE(TestGathering());
}
