// A draw that finds the module not initialized, because somebody else in the process has finalized it, initializes it
// again.

#include "tests/support/tree.h"
#include "tests/token/background_draw.h"
#include "tests/token/token_host.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <p11-kit/pkcs11.h>

namespace {

class TokenInitializing : public TokenHost {
 protected:
  // As the host, without p11-kit.
  static void FinalizeModule() {
    void* const module = ::dlopen(MOCK_MODULE, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, module);
    EXPECT_EQ(CKR_OK, reinterpret_cast<CK_C_Finalize>(::dlsym(module, "C_Finalize"))(nullptr));
    ::dlclose(module);
  }

  void WaitForHanging(const std::string& function, std::size_t count) {
    ASSERT_TRUE(tokens.Hangs(function));
    while (tokens.CountRemarks("hangs") < count) Pause();
  }

  std::size_t CountSuccesses(const std::string& function) const {
    std::size_t count = 0;
    for (const MockCall& call : tokens.Log())
      count += call.function == function && call.remark.empty() && call.result == 0;
    return count;
  }

  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

  std::string HangIn(const std::string& function) const {
    return "hang function=" + function + " until=" + release;
  }

  const std::string release = TreePath("mock/go");
  const std::function<std::string()> draw = [this] { return Draw(); };
};

}  // namespace

TEST_F(TokenInitializing, IsDoneByOneOfManyDraws) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0", HangIn("C_GetTokenInfo")});
  BackgroundDraw first(draw);
  BackgroundDraw second(draw);
  BackgroundDraw third(draw);
  WaitForHanging("C_GetTokenInfo", 3);
  FinalizeModule();
  WriteFile(release, "");
  for (BackgroundDraw* const each : {&first, &second, &third}) EXPECT_EQ("drawn", each->Finish());
  EXPECT_EQ(2U, CountSuccesses("C_Initialize"));
}

TEST_F(TokenInitializing, KeepsOtherDrawsWaiting) {
  Start({"slot id=0"});
  FinalizeModule();
  tokens.Set({"slot id=0", HangIn("C_Initialize")});
  BackgroundDraw first(draw);
  WaitForHanging("C_Initialize", 1);
  tokens.ClearLog();
  BackgroundDraw second(draw);
  for (int i = 0; i < 10; ++i) Pause();
  EXPECT_TRUE(tokens.Log().empty());  // it calls nothing in the module
  EXPECT_FALSE(second.HasEnded());
  WriteFile(release, "");
  EXPECT_EQ("drawn", first.Finish());
  EXPECT_EQ("drawn", second.Finish());
}

TEST_F(TokenInitializing, IsDoneBeforeDrawsThatBeginLater) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0", HangIn("C_GenerateRandom")});
  BackgroundDraw inside(draw);
  WaitForHanging("C_GenerateRandom", 1);
  tokens.Set({"slot id=0", Fault(1, "*", 1, CKR_CRYPTOKI_NOT_INITIALIZED) + " times=2"});
  tokens.ClearLog();
  BackgroundDraw initializing(draw);
  while (tokens.Log().size() < 2) Pause();
  for (int i = 0; i < 4; ++i) Pause();
  tokens.ClearLog();
  BackgroundDraw later(draw);
  for (int i = 0; i < 10; ++i) Pause();
  EXPECT_TRUE(tokens.Log().empty());
  WriteFile(release, "");
  for (BackgroundDraw* const each : {&inside, &initializing, &later}) each->Finish();
  EXPECT_EQ(1U, CountSuccesses("C_Initialize"));
}

TEST_F(TokenInitializing, LetsOtherDrawsGoOnBeforeItsOwnDrawHasEnded) {
  Start({"slot id=0"});
  FinalizeModule();
  tokens.Set({"slot id=0", HangIn("C_Initialize")});
  BackgroundDraw first(draw);
  WaitForHanging("C_Initialize", 1);
  BackgroundDraw second(draw);
  for (int i = 0; i < 10; ++i) Pause();
  const std::string end = TreePath("mock/end");
  tokens.Set({"slot id=0", "hang function=C_GenerateRandom until=" + end});
  tokens.ClearLog();
  WriteFile(release, "");
  WaitForHanging("C_GenerateRandom", 2);
  WriteFile(end, "");
  EXPECT_EQ("drawn", first.Finish());
  EXPECT_EQ("drawn", second.Finish());
}

// The module is finalized after it has listed its slots.
TEST_F(TokenInitializing, FollowsATokenThatCannotBeRead) {
  Start({"slot id=0"});
  tokens.Set(
      {"slot id=0", Fault(1, "C_GetTokenInfo", 1, CKR_CRYPTOKI_NOT_INITIALIZED) + " times=2"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(2U, CountSuccesses("C_Initialize"));
}

// The token is read before and after the session is opened.
TEST_F(TokenInitializing, FollowsATokenThatCannotBeReadInItsSession) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  tokens.Set({"slot id=0", Fault(1, "C_GetTokenInfo", 2, CKR_CRYPTOKI_NOT_INITIALIZED)});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(2U, CountSuccesses("C_Initialize"));
}

TEST_F(TokenInitializing, IsDoneForAReport) {
  Start({"slot id=0"});
  FinalizeModule();
  EXPECT_THAT(Report(), testing::StartsWith("device\tA1\t"));
}

TEST_F(TokenInitializing, LeavesAModuleWithoutLocksFinalizedAtTheEnd) {
  Start({"module locks=no", "slot id=0"});
  tokens.Set({"module locks=no", "slot id=0",
              Fault(1, "*", 1, CKR_CRYPTOKI_NOT_INITIALIZED) + " times=2"});
  EXPECT_EQ("drawn", Draw());
  Stop();
  EXPECT_EQ(2U, CountSuccesses("C_Initialize"));
  EXPECT_EQ(2U, CountSuccesses("C_Finalize"));
  EXPECT_FALSE(IsMapped("libmock_module.so"));
}
