#include "plugins/token/pkcs11/session.h"

#include <cstring>
#include <gmock/gmock.h>
#include <vector>

using testing::Each;

namespace {

CK_RV OpenSession(CK_SLOT_ID, CK_FLAGS, void*, CK_NOTIFY, CK_SESSION_HANDLE*) { return CKR_OK; }

CK_RV CloseSession(CK_SESSION_HANDLE) { return CKR_OK; }

// Fills the pieces that it refuses, and leaves the others as they are.
CK_RV GenerateWhatItRefuses(CK_SESSION_HANDLE, unsigned char* bytes, CK_ULONG size) {
  if (size <= 64) return CKR_OK;
  std::memset(bytes, 0xA5, size);
  return CKR_DATA_LEN_RANGE;
}

}  // namespace

TEST(TokenSession, RefusedPieceLeavesNoBytes) {
  CK_FUNCTION_LIST module = {};
  module.C_OpenSession = OpenSession;
  module.C_CloseSession = CloseSession;
  module.C_GenerateRandom = GenerateWhatItRefuses;
  std::vector<unsigned char> bytes(600);
  EXPECT_EQ(CKR_OK, Session(module, 0).Draw(bytes.data(), bytes.size(), [] { return true; }));
  EXPECT_THAT(bytes, Each(0));
}
