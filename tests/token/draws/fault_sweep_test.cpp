// Each call into the module fails once, with each of several errors. A draw succeeds or fails with a zeroed
// buffer, and in either case the next one works.

#include "tests/support/tree.h"
#include "tests/token/token_host.h"

#include <p11-kit/pkcs11.h>

namespace {

constexpr std::size_t kSize = 600;  // three pieces

class TokenFaults : public TokenHost, public testing::WithParamInterface<unsigned long> {
 protected:
  std::string FaultAt(unsigned long call, unsigned long times = 1) {
    return Fault(++number, "*", call, GetParam()) + " times=" + std::to_string(times);
  }

  std::size_t CallsOfOneDraw() {
    tokens.ClearLog();
    EXPECT_EQ("drawn", Draw(kSize));
    return tokens.Log().size();
  }

  unsigned long number = 0;
};

}  // namespace

TEST_P(TokenFaults, InEachCallOfADraw) {
  Start({"slot id=0"});
  const std::size_t calls = CallsOfOneDraw();
  ASSERT_LT(3U, calls);
  for (unsigned long call = 1; call <= calls; ++call) {
    for (const unsigned long times : {1, 2, 1000}) {
      tokens.Set({"slot id=0", FaultAt(call, times)});
      const std::string result = Draw(kSize);
      EXPECT_TRUE(result == "drawn" || result == "zeros") << "call " << call << ": " << result;
      tokens.Set({"slot id=0"});
      EXPECT_EQ("drawn", Draw(kSize)) << "after a fault in call " << call;
      EXPECT_EQ(0U, tokens.OpenSessions()) << "call " << call;
    }
  }
  Stop();
  EXPECT_FALSE(IsMapped("libmock_module.so"));
}

TEST_P(TokenFaults, InEachCallOfASelection) {
  Start({"slot id=0", "slot id=1 serial=B2"});
  tokens.ClearLog();
  ASSERT_TRUE(rng->SelectDevice("B2"));
  const std::size_t calls = tokens.Log().size();
  for (unsigned long call = 1; call <= calls; ++call) {
    ASSERT_TRUE(rng->SelectDevice("A1"));
    tokens.Set({"slot id=0", "slot id=1 serial=B2", FaultAt(call)});
    const bool isSelected = rng->SelectDevice("B2");
    tokens.Set({"slot id=0", "slot id=1 serial=B2"});
    EXPECT_EQ(isSelected ? "B2" : "A1", HardwareId());
    EXPECT_EQ("drawn", Draw());
  }
  EXPECT_EQ(0U, tokens.OpenSessions());
}

TEST_P(TokenFaults, InEachCallOfAStart) {
  ASSERT_TRUE(IsAvailable({"slot id=0"}));
  const std::size_t calls = tokens.Log().size();
  Stop();
  ASSERT_LT(3U, calls);
  for (unsigned long call = 1; call <= calls; ++call) {
    if (IsAvailable({"slot id=0", FaultAt(call)})) {
      tokens.Set({"slot id=0"});
      EXPECT_EQ("drawn", Draw()) << call;
    }
    Stop();
    EXPECT_EQ(0U, tokens.OpenSessions()) << call;
    EXPECT_FALSE(IsMapped("libmock_module.so")) << call;
    EXPECT_FALSE(IsMapped("librngrutoken.so")) << call;
  }
  EXPECT_TRUE(IsAvailable({"slot id=0"}));
}

INSTANTIATE_TEST_SUITE_P(Of, TokenFaults,
                         testing::Values(CKR_DEVICE_ERROR, CKR_DEVICE_REMOVED,
                                         CKR_TOKEN_NOT_PRESENT, CKR_SESSION_HANDLE_INVALID,
                                         CKR_CRYPTOKI_NOT_INITIALIZED, CKR_GENERAL_ERROR,
                                         CKR_HOST_MEMORY, CKR_SLOT_ID_INVALID, CKR_SESSION_COUNT,
                                         CKR_USER_NOT_LOGGED_IN, CKR_BUFFER_TOO_SMALL,
                                         CKR_FUNCTION_NOT_SUPPORTED));
