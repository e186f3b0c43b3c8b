// The mock module behaves as modules do, and as its script says.

#include "tests/support/process.h"
#include "tests/support/tree.h"
#include "tests/token/mock_tokens.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <p11-kit/p11-kit.h>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Bytes = std::vector<unsigned char>;

// Through the module itself: p11-kit would keep some calls from it.
class MockModule : public testing::Test {
 protected:
  MockModule() : module(p11_kit_module_load(MOCK_MODULE, P11_KIT_MODULE_UNMANAGED)) {}
  ~MockModule() override { p11_kit_module_release(module); }

  void Start(std::initializer_list<std::string> lines) {
    tokens.Set(lines);
    ASSERT_EQ(CKR_OK, module->C_Initialize(nullptr));
  }

  std::vector<CK_SLOT_ID> Slots(bool onlyPresent) {
    CK_SLOT_ID list[8];
    CK_ULONG count = 8;
    EXPECT_EQ(CKR_OK, module->C_GetSlotList(onlyPresent, list, &count));
    return {list, list + count};
  }

  CK_RV Open(CK_SLOT_ID slot, CK_FLAGS more = 0) {
    return module->C_OpenSession(slot, CKF_SERIAL_SESSION | more, nullptr, nullptr, &session);
  }

  CK_RV Draw(std::size_t size) {
    bytes.assign(size, 0);
    return module->C_GenerateRandom(session, bytes.data(), size);
  }

  CK_TOKEN_INFO Token(CK_SLOT_ID slot) {
    CK_TOKEN_INFO info = {};
    EXPECT_EQ(CKR_OK, module->C_GetTokenInfo(slot, &info));
    return info;
  }

  const MockTokens tokens;
  CK_FUNCTION_LIST* const module;
  CK_SESSION_HANDLE session = 0;
  Bytes bytes;
};

template <std::size_t size>
std::string Text(const unsigned char (&field)[size]) {
  return std::string(reinterpret_cast<const char*>(field), size);
}

}  // namespace

TEST_F(MockModule, IsInitializedOnce) {
  CK_INFO info = {};
  EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, module->C_GetInfo(&info));
  EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, module->C_Finalize(nullptr));
  EXPECT_EQ(CKR_OK, module->C_Initialize(nullptr));
  EXPECT_EQ(CKR_CRYPTOKI_ALREADY_INITIALIZED, module->C_Initialize(nullptr));
  EXPECT_EQ(CKR_OK, module->C_GetInfo(&info));
  EXPECT_EQ(CKR_OK, module->C_Finalize(nullptr));
  EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, module->C_GetInfo(&info));
}

TEST_F(MockModule, AnswersEveryFunction) {
  Start({});
  void* const* const table = reinterpret_cast<void* const*>(module) + 1;  // after the version
  EXPECT_EQ(68, std::count_if(table, table + 68, [](void* entry) { return entry; }));
  EXPECT_EQ(CKR_FUNCTION_NOT_SUPPORTED, module->C_SeedRandom(1, nullptr, 0));
  EXPECT_EQ(CKR_FUNCTION_NOT_PARALLEL, module->C_CancelFunction(1));
}

TEST_F(MockModule, ListsSlotsAsTheScriptChanges) {
  Start({"slot id=4", "slot id=5 present=no"});
  EXPECT_THAT(Slots(false), ElementsAre(4, 5));
  EXPECT_THAT(Slots(true), ElementsAre(4));
  tokens.Set({"slot id=5"});
  EXPECT_THAT(Slots(true), ElementsAre(5));
  tokens.Set("");
  EXPECT_THAT(Slots(false), IsEmpty());
}

TEST_F(MockModule, ReportsASlotLessBetweenTheCalls) {
  Start({"module hides=1", "slot id=0", "slot id=1"});
  CK_SLOT_ID list[8];
  CK_ULONG count = 0;
  ASSERT_EQ(CKR_OK, module->C_GetSlotList(true, nullptr, &count));
  EXPECT_EQ(1U, count);
  EXPECT_EQ(CKR_BUFFER_TOO_SMALL, module->C_GetSlotList(true, list, &count));
  ASSERT_EQ(CKR_OK, module->C_GetSlotList(true, nullptr, &count));
  EXPECT_EQ(2U, count);
  EXPECT_EQ(CKR_OK, module->C_GetSlotList(true, list, &count));
}

TEST_F(MockModule, ReportsMoreSlotsThanItLists) {
  Start({"module extra=3", "slot id=1"});
  CK_SLOT_ID list[8];
  CK_ULONG count = 0;
  ASSERT_EQ(CKR_OK, module->C_GetSlotList(true, nullptr, &count));
  EXPECT_EQ(4U, count);
  ASSERT_EQ(CKR_OK, module->C_GetSlotList(true, list, &count));
  EXPECT_EQ(1U, count);
}

TEST_F(MockModule, PadsTextsWithBlanks) {
  Start({"slot id=0 serial=%3D%01 label=My%20token model=M manufacturer=Us rng=no pin=yes"});
  const CK_TOKEN_INFO token = Token(0);
  EXPECT_EQ("=\x01" + std::string(14, ' '), Text(token.serialNumber));
  EXPECT_EQ("My token" + std::string(24, ' '), Text(token.label));
  EXPECT_EQ("M" + std::string(15, ' '), Text(token.model));
  EXPECT_EQ("Us" + std::string(30, ' '), Text(token.manufacturerID));
  EXPECT_EQ(CKF_LOGIN_REQUIRED | CKF_USER_PIN_INITIALIZED | CKF_TOKEN_INITIALIZED, token.flags);
}

TEST_F(MockModule, DrawsInASession) {
  Start({"slot id=0"});
  ASSERT_EQ(CKR_OK, Open(0));
  EXPECT_EQ(CKR_OK, Draw(64));
  EXPECT_GT(16, std::count(bytes.begin(), bytes.end(), 0));
  EXPECT_EQ(1U, tokens.OpenSessions());
  EXPECT_EQ(CKR_OK, module->C_CloseSession(session));
  EXPECT_EQ(0U, tokens.OpenSessions());
  EXPECT_EQ(CKR_SESSION_HANDLE_INVALID, Draw(64));
  EXPECT_EQ(CKR_SESSION_HANDLE_INVALID, module->C_CloseSession(session));
  EXPECT_THAT(tokens.OpenedSlots(), ElementsAre(0));
  EXPECT_THAT(tokens.Pieces(), ElementsAre(64));
}

TEST_F(MockModule, RefusesWhatATokenCannotDo) {
  Start({"slot id=0 rng=no", "slot id=1 pin=yes", "slot id=2 protected=yes", "slot id=3 known=no",
         "slot id=4 initialized=no", "slot id=5 largest=32 refusal=0x30", "slot id=6 sessions=0",
         "slot id=7 present=no"});
  ASSERT_EQ(CKR_OK, Open(0));
  EXPECT_EQ(CKR_RANDOM_NO_RNG, Draw(1));
  ASSERT_EQ(CKR_OK, Open(1));
  EXPECT_EQ(CKR_USER_NOT_LOGGED_IN, Draw(1));
  EXPECT_EQ(CKR_TOKEN_WRITE_PROTECTED, Open(2, CKF_RW_SESSION));
  EXPECT_EQ(CKR_OK, Open(2));
  EXPECT_EQ(CKR_TOKEN_NOT_RECOGNIZED, Open(3));
  EXPECT_EQ(CKR_TOKEN_NOT_RECOGNIZED, Open(4));
  ASSERT_EQ(CKR_OK, Open(5));
  EXPECT_EQ(CKR_DEVICE_ERROR, Draw(33));
  EXPECT_EQ(CKR_OK, Draw(32));
  EXPECT_EQ(CKR_SESSION_COUNT, Open(6));
  EXPECT_EQ(CKR_TOKEN_NOT_PRESENT, Open(7));
  EXPECT_EQ(CKR_SLOT_ID_INVALID, Open(8));
  EXPECT_EQ(CKR_SESSION_PARALLEL_NOT_SUPPORTED,
            module->C_OpenSession(0, 0, nullptr, nullptr, &session));
}

TEST_F(MockModule, GivesHalfOfTheBytes) {
  Start({"slot id=0 zeros=half"});
  ASSERT_EQ(CKR_OK, Open(0));
  ASSERT_EQ(CKR_OK, Draw(64));
  EXPECT_EQ(Bytes(32), Bytes(bytes.begin() + 32, bytes.end()));
}

TEST_F(MockModule, RepeatsItself) {
  Start({"slot id=0 same=yes"});
  ASSERT_EQ(CKR_OK, Open(0));
  ASSERT_EQ(CKR_OK, Draw(32));
  const Bytes first = bytes;
  ASSERT_EQ(CKR_OK, Draw(32));
  EXPECT_EQ(first, bytes);
}

TEST_F(MockModule, TokenIsGoneAfterItsLastByte) {
  Start({"slot id=0 bytes=100"});
  ASSERT_EQ(CKR_OK, Open(0));
  EXPECT_EQ(CKR_OK, Draw(64));
  EXPECT_EQ(CKR_DEVICE_REMOVED, Draw(64));
  EXPECT_THAT(Slots(true), IsEmpty());
  tokens.Set({"slot id=0 bytes=100 life=2"});
  EXPECT_THAT(Slots(true), ElementsAre(0));
  EXPECT_EQ(CKR_SESSION_HANDLE_INVALID, Draw(64));
  ASSERT_EQ(CKR_OK, Open(0));
  EXPECT_EQ(CKR_OK, Draw(64));
}

TEST_F(MockModule, FailsInTheChosenCalls) {
  Start({"slot id=0"});
  ASSERT_EQ(CKR_OK, Open(0));
  tokens.Set({"slot id=0", "fault number=1 function=C_GenerateRandom call=2 times=2 result=0x30"});
  EXPECT_THAT((std::vector{Draw(1), Draw(1), Draw(1), Draw(1)}),
              ElementsAre(CKR_OK, CKR_DEVICE_ERROR, CKR_DEVICE_ERROR, CKR_OK));
  tokens.Set({"slot id=0", "fault number=2 function=* call=1 result=0x31"});
  EXPECT_EQ(CKR_DEVICE_MEMORY, module->C_CloseSession(session));
  EXPECT_EQ(CKR_OK, Draw(1));
}

TEST_F(MockModule, HangsUntilAFileAppears) {
  Start({"slot id=0", "hang function=C_OpenSession until=" + TreePath("go")});
  std::thread draw([this] { EXPECT_EQ(CKR_OK, Open(0)); });
  EXPECT_TRUE(tokens.Hangs("C_OpenSession"));
  EXPECT_THAT(Slots(true), ElementsAre(0));  // others may call
  EXPECT_EQ(0U, tokens.Count("C_OpenSession"));
  WriteFile(TreePath("go"), "");
  draw.join();
  EXPECT_EQ(1U, tokens.Count("C_OpenSession"));
}

TEST_F(MockModule, WithoutLocksIsNotThreadSafe) {
  tokens.Set({"module locks=no micros=20000", "slot id=0"});
  CK_C_INITIALIZE_ARGS args = {};
  args.flags = CKF_OS_LOCKING_OK;
  EXPECT_EQ(CKR_CANT_LOCK, module->C_Initialize(&args));
  ASSERT_EQ(CKR_OK, module->C_Initialize(nullptr));
  ASSERT_EQ(CKR_OK, Open(0));
  ASSERT_EQ(CKR_OK, Draw(1));
  EXPECT_EQ(0U, tokens.CountRemarks("overlaps"));
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      unsigned char byte;
      module->C_GenerateRandom(session, &byte, 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_LT(0U, tokens.CountRemarks("overlaps"));
}

TEST_F(MockModule, CopyOfTheProcessInitializesAgain) {
  Start({"slot id=0"});
  ASSERT_EQ(CKR_OK, Open(0));
  const Result copy = RunForked([this] {
    const bool isUnknown = Draw(1) == CKR_CRYPTOKI_NOT_INITIALIZED;
    const bool isStarted = module->C_Initialize(nullptr) == CKR_OK;
    return isUnknown && isStarted && Draw(1) == CKR_SESSION_HANDLE_INVALID && Open(0) == CKR_OK ? 0
                                                                                                : 1;
  });
  EXPECT_EQ(0, copy.status);
  EXPECT_EQ(CKR_OK, Draw(1));
}

TEST_F(MockModule, MayNotNoticeAFork) {
  Start({"module forks=unnoticed", "slot id=0"});
  ASSERT_EQ(CKR_OK, Open(0));
  EXPECT_EQ(0, RunForked([this] { return Draw(1) == CKR_OK ? 0 : 1; }).status);
}

TEST_F(MockModule, CanBeManaged) {
  tokens.Set({"slot id=0"});
  CK_FUNCTION_LIST* const managed = p11_kit_module_load(MOCK_MODULE, 0);
  ASSERT_NE(nullptr, managed);
  EXPECT_EQ(CKR_OK, p11_kit_module_initialize(managed));
  EXPECT_EQ(CKR_CRYPTOKI_ALREADY_INITIALIZED, module->C_Initialize(nullptr));
  EXPECT_EQ(CKR_OK, p11_kit_module_finalize(managed));
  p11_kit_module_release(managed);
  EXPECT_EQ(1U, tokens.Count("C_Finalize"));
}
