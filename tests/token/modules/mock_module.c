/* A PKCS#11 module without a device: its tokens, and what goes wrong with them, are lines of a file that a test
   changes while programs use it. See mock_script.h. It has what a caller of C_GenerateRandom needs. */
#define _GNU_SOURCE
#include "mock_state.h"

#include <string.h>
#include <sys/random.h>

#define EXPORTED __attribute__((visibility("default")))

static void Pad(unsigned char* field, size_t size, const struct MockText* text) {
  memset(field, ' ', size);
  memcpy(field, text->bytes, text->size < size ? text->size : size);
}

static void PadWord(unsigned char* field, size_t size, const char* word) {
  memset(field, ' ', size);
  memcpy(field, word, strlen(word));
}

/* --- The module */

EXPORTED CK_RV C_Initialize(void* given) {
  const CK_C_INITIALIZE_ARGS* const args = given;
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_Initialize");
  if (result == CKR_OK && args && args->pReserved) result = CKR_ARGUMENTS_BAD;
  const bool hasThreads = args && ((args->flags & CKF_OS_LOCKING_OK) || args->CreateMutex);
  if (result == CKR_OK && hasThreads && !call.script.locks) result = CKR_CANT_LOCK;
  if (result == CKR_OK) result = InitializeMock();
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_Finalize(void* reserved) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_Finalize");
  if (result == CKR_OK && reserved) result = CKR_ARGUMENTS_BAD;
  if (result == CKR_OK) FinalizeMock();
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_GetInfo(CK_INFO* info) {
  struct MockCall call;
  const CK_RV result = BeginMockCall(&call, "C_GetInfo");
  if (result != CKR_OK) return EndMockCall(&call, result);
  memset(info, 0, sizeof *info);
  info->cryptokiVersion = (CK_VERSION){2, 40};
  info->libraryVersion = (CK_VERSION){1, 0};
  Pad(info->manufacturerID, sizeof info->manufacturerID, &call.script.manufacturer);
  PadWord(info->libraryDescription, sizeof info->libraryDescription, "Module of the tests");
  return EndMockCall(&call, CKR_OK);
}

/* --- Slots and tokens */

static CK_RV ListSlots(const struct MockCall* call, CK_BBOOL onlyPresent, CK_SLOT_ID* list,
                       CK_ULONG* count) {
  CK_SLOT_ID found[kMostSlots];
  CK_ULONG number = 0;
  for (size_t i = 0; i < call->script.slotCount; ++i) {
    const struct MockSlot* const slot = &call->script.slots[i];
    if (!onlyPresent || IsMockTokenPresent(slot)) found[number++] = slot->id;
  }
  const bool isEnough = !list || *count >= number;
  *count = !list && number > 0 && HidesMockSlot(call) ? number - 1 : number;
  if (!list) *count += call->script.extra;
  if (!isEnough) return CKR_BUFFER_TOO_SMALL;
  if (list) memcpy(list, found, number * sizeof found[0]);
  return CKR_OK;
}

EXPORTED CK_RV C_GetSlotList(CK_BBOOL onlyPresent, CK_SLOT_ID* list, CK_ULONG* count) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GetSlotList");
  if (result == CKR_OK) result = ListSlots(&call, onlyPresent, list, count);
  return EndMockCall(&call, result);
}

static void DescribeSlot(const struct MockSlot* slot, CK_SLOT_INFO* info) {
  memset(info, 0, sizeof *info);
  PadWord(info->slotDescription, sizeof info->slotDescription, "Slot of the tests");
  PadWord(info->manufacturerID, sizeof info->manufacturerID, "Mock");
  info->flags = CKF_REMOVABLE_DEVICE | CKF_HW_SLOT;
  if (IsMockTokenPresent(slot)) info->flags |= CKF_TOKEN_PRESENT;
}

EXPORTED CK_RV C_GetSlotInfo(CK_SLOT_ID id, CK_SLOT_INFO* info) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GetSlotInfo");
  call.slot = id;
  const struct MockSlot* const slot = FindMockSlot(&call, id);
  if (result == CKR_OK && !slot) result = CKR_SLOT_ID_INVALID;
  if (result == CKR_OK) DescribeSlot(slot, info);
  return EndMockCall(&call, result);
}

static void DescribeToken(const struct MockSlot* slot, CK_TOKEN_INFO* info) {
  memset(info, 0, sizeof *info);
  Pad(info->label, sizeof info->label, &slot->label);
  Pad(info->manufacturerID, sizeof info->manufacturerID, &slot->manufacturer);
  Pad(info->model, sizeof info->model, &slot->model);
  Pad(info->serialNumber, sizeof info->serialNumber, &slot->serial);
  memset(info->utcTime, ' ', sizeof info->utcTime);
  info->ulMaxSessionCount = slot->sessions;
  info->ulSessionCount = CountMockSessions(slot);
  if (slot->hasRng) info->flags |= CKF_RNG;
  if (slot->requiresPin) info->flags |= CKF_LOGIN_REQUIRED | CKF_USER_PIN_INITIALIZED;
  if (slot->isInitialized) info->flags |= CKF_TOKEN_INITIALIZED;
  if (slot->isProtected) info->flags |= CKF_WRITE_PROTECTED;
}

static CK_RV ResultForToken(const struct MockSlot* slot) {
  if (!slot) return CKR_SLOT_ID_INVALID;
  if (!IsMockTokenPresent(slot)) return CKR_TOKEN_NOT_PRESENT;
  return slot->isKnown ? CKR_OK : CKR_TOKEN_NOT_RECOGNIZED;
}

EXPORTED CK_RV C_GetTokenInfo(CK_SLOT_ID id, CK_TOKEN_INFO* info) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GetTokenInfo");
  call.slot = id;
  const struct MockSlot* const slot = FindMockSlot(&call, id);
  if (result == CKR_OK) result = ResultForToken(slot);
  if (result == CKR_OK) DescribeToken(slot, info);
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_GetMechanismList(CK_SLOT_ID id, CK_MECHANISM_TYPE* list, CK_ULONG* count) {
  (void)list;
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GetMechanismList");
  call.slot = id;
  if (result == CKR_OK) result = ResultForToken(FindMockSlot(&call, id));
  if (result == CKR_OK) *count = 0;
  return EndMockCall(&call, result);
}

/* --- Sessions */

static CK_RV ResultForSession(const struct MockSlot* slot, CK_FLAGS flags) {
  const CK_RV result = ResultForToken(slot);
  if (result != CKR_OK) return result;
  if (!(flags & CKF_SERIAL_SESSION)) return CKR_SESSION_PARALLEL_NOT_SUPPORTED;
  if (!slot->isInitialized) return CKR_TOKEN_NOT_RECOGNIZED;
  if ((flags & CKF_RW_SESSION) && slot->isProtected) return CKR_TOKEN_WRITE_PROTECTED;
  return CountMockSessions(slot) < slot->sessions ? CKR_OK : CKR_SESSION_COUNT;
}

EXPORTED CK_RV C_OpenSession(CK_SLOT_ID id, CK_FLAGS flags, void* application, CK_NOTIFY notify,
                             CK_SESSION_HANDLE* session) {
  (void)application;
  (void)notify;
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_OpenSession");
  call.slot = id;
  const struct MockSlot* const slot = FindMockSlot(&call, id);
  if (result == CKR_OK) result = ResultForSession(slot, flags);
  if (result == CKR_OK) call.session = *session = OpenMockSession(slot);
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_CloseSession(CK_SESSION_HANDLE session) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_CloseSession");
  call.session = session;
  const bool isThere = FindMockSession(&call, session);
  if (result == CKR_OK && !(CloseMockSession(session) && isThere))
    result = CKR_SESSION_HANDLE_INVALID;
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_CloseAllSessions(CK_SLOT_ID id) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_CloseAllSessions");
  call.slot = id;
  if (result == CKR_OK && !FindMockSlot(&call, id)) result = CKR_SLOT_ID_INVALID;
  if (result == CKR_OK) CloseMockSessions(id);
  return EndMockCall(&call, result);
}

EXPORTED CK_RV C_GetSessionInfo(CK_SESSION_HANDLE session, CK_SESSION_INFO* info) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GetSessionInfo");
  call.session = session;
  const struct MockSlot* const slot = FindMockSession(&call, session);
  if (result == CKR_OK && !slot) result = CKR_SESSION_HANDLE_INVALID;
  if (result == CKR_OK) {
    *info = (CK_SESSION_INFO){slot->id, CKS_RO_PUBLIC_SESSION, CKF_SERIAL_SESSION, 0};
  }
  return EndMockCall(&call, result);
}

/* Nobody has the PIN. */
EXPORTED CK_RV C_Login(CK_SESSION_HANDLE session, CK_USER_TYPE user, unsigned char* pin,
                       CK_ULONG size) {
  (void)user;
  (void)pin;
  (void)size;
  struct MockCall call;
  const CK_RV result = BeginMockCall(&call, "C_Login");
  call.session = session;
  return EndMockCall(&call, result == CKR_OK ? CKR_PIN_INCORRECT : result);
}

/* --- Random bytes */

static void Fill(unsigned char* data, CK_ULONG size) {
  for (CK_ULONG end = 0; end < size;) {
    const ssize_t count = getrandom(data + end, size - end, 0);
    if (count > 0) end += (CK_ULONG)count;
  }
}

static CK_RV Generate(const struct MockSlot* slot, unsigned char* data, CK_ULONG size) {
  if (!slot) return CKR_SESSION_HANDLE_INVALID;
  if (!IsMockTokenPresent(slot)) return CKR_DEVICE_REMOVED;
  if (!data) return CKR_ARGUMENTS_BAD;
  if (!slot->hasRng) return CKR_RANDOM_NO_RNG;
  if (slot->requiresPin) return CKR_USER_NOT_LOGGED_IN;
  if (size > slot->largest) return slot->refusal;
  const CK_ULONG given = ServeMockBytes(slot, size);
  Fill(data, slot->leavesHalf ? given / 2 : given);
  for (CK_ULONG i = 0; slot->isSame && i < given; ++i) data[i] = (unsigned char)(167 * i + 13);
  if (slot->zeroesHalf) memset(data + size / 2, 0, size - size / 2);
  return given == size ? CKR_OK : CKR_DEVICE_REMOVED;
}

EXPORTED CK_RV C_GenerateRandom(CK_SESSION_HANDLE session, unsigned char* data, CK_ULONG size) {
  struct MockCall call;
  CK_RV result = BeginMockCall(&call, "C_GenerateRandom");
  call.session = session;
  call.size = size;
  SleepInMockCall(&call);
  if (result == CKR_OK) {
    result = Generate(FindMockSession(&call, session), data, size);
  } else if (data) {
    Fill(data, size / 2); /* what a caller must not take for random bytes */
  }
  return EndMockCall(&call, result);
}

/* --- The table */

static CK_RV NotSupported(void) { return CKR_FUNCTION_NOT_SUPPORTED; }

static CK_RV NotParallel(CK_SESSION_HANDLE session) {
  (void)session;
  return CKR_FUNCTION_NOT_PARALLEL;
}

/* Through a type that matches all functions: the compiler warns of other casts. */
#define NONE(name) .name = (CK_##name)(void (*)(void))NotSupported

static CK_FUNCTION_LIST g_functions = {
    .version = {2, 40},
    .C_Initialize = C_Initialize,
    .C_Finalize = C_Finalize,
    .C_GetInfo = C_GetInfo,
    .C_GetFunctionList = C_GetFunctionList,
    .C_GetSlotList = C_GetSlotList,
    .C_GetSlotInfo = C_GetSlotInfo,
    .C_GetTokenInfo = C_GetTokenInfo,
    .C_GetMechanismList = C_GetMechanismList,
    .C_OpenSession = C_OpenSession,
    .C_CloseSession = C_CloseSession,
    .C_CloseAllSessions = C_CloseAllSessions,
    .C_GetSessionInfo = C_GetSessionInfo,
    .C_Login = C_Login,
    .C_GenerateRandom = C_GenerateRandom,
    .C_GetFunctionStatus = NotParallel,
    .C_CancelFunction = NotParallel,
    NONE(C_GetMechanismInfo),
    NONE(C_InitToken),
    NONE(C_InitPIN),
    NONE(C_SetPIN),
    NONE(C_GetOperationState),
    NONE(C_SetOperationState),
    NONE(C_Logout),
    NONE(C_CreateObject),
    NONE(C_CopyObject),
    NONE(C_DestroyObject),
    NONE(C_GetObjectSize),
    NONE(C_GetAttributeValue),
    NONE(C_SetAttributeValue),
    NONE(C_FindObjectsInit),
    NONE(C_FindObjects),
    NONE(C_FindObjectsFinal),
    NONE(C_EncryptInit),
    NONE(C_Encrypt),
    NONE(C_EncryptUpdate),
    NONE(C_EncryptFinal),
    NONE(C_DecryptInit),
    NONE(C_Decrypt),
    NONE(C_DecryptUpdate),
    NONE(C_DecryptFinal),
    NONE(C_DigestInit),
    NONE(C_Digest),
    NONE(C_DigestUpdate),
    NONE(C_DigestKey),
    NONE(C_DigestFinal),
    NONE(C_SignInit),
    NONE(C_Sign),
    NONE(C_SignUpdate),
    NONE(C_SignFinal),
    NONE(C_SignRecoverInit),
    NONE(C_SignRecover),
    NONE(C_VerifyInit),
    NONE(C_Verify),
    NONE(C_VerifyUpdate),
    NONE(C_VerifyFinal),
    NONE(C_VerifyRecoverInit),
    NONE(C_VerifyRecover),
    NONE(C_DigestEncryptUpdate),
    NONE(C_DecryptDigestUpdate),
    NONE(C_SignEncryptUpdate),
    NONE(C_DecryptVerifyUpdate),
    NONE(C_GenerateKey),
    NONE(C_GenerateKeyPair),
    NONE(C_WrapKey),
    NONE(C_UnwrapKey),
    NONE(C_DeriveKey),
    NONE(C_SeedRandom),
    NONE(C_WaitForSlotEvent),
};

EXPORTED CK_RV C_GetFunctionList(CK_FUNCTION_LIST** functions) {
  if (!functions) return CKR_ARGUMENTS_BAD;
  *functions = &g_functions;
  return CKR_OK;
}
