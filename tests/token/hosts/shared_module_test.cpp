// The host uses the module as well: by itself, or through p11-kit.

#include "tests/token/token_host.h"

#include <dlfcn.h>
#include <p11-kit/p11-kit.h>

namespace {

constexpr char kTokens[] = "slot id=0";

class SharedModule : public TokenHost {
 protected:
  SharedModule() : module(::dlopen(MOCK_MODULE, RTLD_NOW)) {
    const auto get = reinterpret_cast<CK_C_GetFunctionList>(::dlsym(module, "C_GetFunctionList"));
    get(&direct);
    tokens.Set(kTokens);
  }
  ~SharedModule() override { ::dlclose(module); }

  static CK_SESSION_HANDLE OpenIn(CK_FUNCTION_LIST& functions) {
    CK_SESSION_HANDLE session = 0;
    EXPECT_EQ(CKR_OK, functions.C_OpenSession(0, CKF_SERIAL_SESSION, nullptr, nullptr, &session));
    return session;
  }

  static CK_RV DrawFrom(CK_FUNCTION_LIST& functions, CK_SESSION_HANDLE session) {
    unsigned char bytes[32];
    return functions.C_GenerateRandom(session, bytes, sizeof bytes);
  }

  void* const module;
  CK_FUNCTION_LIST* direct = nullptr;
};

}  // namespace

TEST_F(SharedModule, HostThatWasFirstKeepsItsSessions) {
  ASSERT_EQ(CKR_OK, direct->C_Initialize(nullptr));
  const CK_SESSION_HANDLE session = OpenIn(*direct);
  for (int start = 0; start < 3; ++start) {
    Start({kTokens});
    EXPECT_EQ("drawn", Draw());
    Stop();
    EXPECT_EQ(CKR_OK, DrawFrom(*direct, session));
  }
  EXPECT_EQ(0U, tokens.Count("C_Finalize"));
  EXPECT_EQ(1U, tokens.OpenSessions());
  EXPECT_EQ(CKR_OK, direct->C_Finalize(nullptr));
}

TEST_F(SharedModule, HostThatWasFirstKeepsThemWhenThereIsNoToken) {
  ASSERT_EQ(CKR_OK, direct->C_Initialize(nullptr));
  const CK_SESSION_HANDLE session = OpenIn(*direct);
  tokens.Set({kTokens, "slot id=1 serial=B2"});
  EXPECT_FALSE(IsAvailable({"slot id=0 rng=no"}));
  Stop();
  tokens.Set(kTokens);
  EXPECT_EQ(CKR_OK, DrawFrom(*direct, session));
  EXPECT_EQ(0U, tokens.Count("C_Finalize"));
}

TEST_F(SharedModule, HostThatWasFirstKeepsThemInAModuleWithoutLocks) {
  tokens.Set({"module locks=no", kTokens});
  ASSERT_EQ(CKR_OK, direct->C_Initialize(nullptr));
  const CK_SESSION_HANDLE session = OpenIn(*direct);
  Start({"module locks=no", kTokens});
  EXPECT_EQ("drawn", Draw());
  Stop();
  EXPECT_EQ(CKR_OK, DrawFrom(*direct, session));
  EXPECT_EQ(0U, tokens.Count("C_Finalize"));
}

TEST_F(SharedModule, IsInitializedAgainAfterTheHostHasFinalizedIt) {
  ASSERT_EQ(CKR_OK, direct->C_Initialize(nullptr));
  Start({kTokens});
  ASSERT_TRUE(rng->SelectDevice("A1"));
  EXPECT_EQ("drawn", Draw());
  ASSERT_EQ(CKR_OK, direct->C_Finalize(nullptr));
  EXPECT_EQ("drawn", Draw());
  Stop();
  EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, direct->C_Finalize(nullptr));
}

TEST_F(SharedModule, IsInitializedAgainAfterItWasOurs) {
  Start({kTokens});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ("drawn", Draw());
    ASSERT_EQ(CKR_OK, direct->C_Finalize(nullptr));
  }
  EXPECT_EQ("drawn", Draw());
}

TEST_F(SharedModule, HostThatComesSecondLosesItsSessionsAtOurStop) {
  Start({kTokens});
  EXPECT_EQ(CKR_CRYPTOKI_ALREADY_INITIALIZED, direct->C_Initialize(nullptr));
  const CK_SESSION_HANDLE session = OpenIn(*direct);
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(CKR_OK, DrawFrom(*direct, session));
  Stop();
  EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, DrawFrom(*direct, session));
}

TEST_F(SharedModule, HostWithManagedModulesKeepsItsSessions) {
  for (const bool isFirst : {true, false}) {
    tokens.ClearLog();
    if (!isFirst) Start({kTokens});
    CK_FUNCTION_LIST* const managed = p11_kit_module_load(MOCK_MODULE, 0);
    ASSERT_EQ(CKR_OK, p11_kit_module_initialize(managed));
    const CK_SESSION_HANDLE session = OpenIn(*managed);
    if (isFirst) Start({kTokens});
    EXPECT_EQ("drawn", Draw());
    Stop();
    EXPECT_EQ(CKR_OK, DrawFrom(*managed, session));
    EXPECT_EQ(0U, tokens.Count("C_Finalize"));
    EXPECT_EQ(CKR_OK, p11_kit_module_finalize(managed));
    p11_kit_module_release(managed);
    EXPECT_EQ(1U, tokens.Count("C_Finalize"));
  }
}
