#define _GNU_SOURCE
#include "mock_state.h"

#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { kMostSessions = 256, kLongestHang = 60 * 1000 / 2 };

struct Session {
  CK_SESSION_HANDLE handle; /* 0: free */
  CK_SLOT_ID slot;
  unsigned long life;
};

struct Token {
  unsigned long life;
  unsigned long served;
};

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static bool g_isInitialized;
static bool g_isCopy; /* a fork that is not noticed yet */
static int g_inside;  /* calls that have begun */
static struct Session g_sessions[kMostSessions];
static CK_SESSION_HANDLE g_lastHandle;
static struct Token g_tokens[kMostSlots];
static unsigned long g_faultNumber, g_faultCalls, g_hidden;

/* --- Fork: the copy has to initialize the module again. */

static void Lock(void) { pthread_mutex_lock(&g_lock); }

static void Unlock(void) { pthread_mutex_unlock(&g_lock); }

static void UnlockCopy(void) {
  g_isCopy = true;
  g_inside = 0;
  pthread_mutex_unlock(&g_lock);
}

__attribute__((constructor)) static void WatchForks(void) {
  pthread_atfork(Lock, Unlock, UnlockCopy);
}

/* --- The log */

static void Append(const char* line, size_t size) {
  const char* const path = getenv("MOCK_LOG");
  const int file = path ? open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600) : -1;
  if (file < 0) return;
  if (write(file, line, size) < 0) abort();
  close(file);
}

static void Note(const char* what, const char* function) {
  char line[100];
  const int size = snprintf(line, sizeof line, "%d %s %s\n", (int)getpid(), what, function);
  Append(line, (size_t)size);
}

static int PrintNumber(char* text, size_t size, const char* name, CK_ULONG number) {
  return number == MOCK_NONE ? 0 : snprintf(text, size, " %s=%lu", name, number);
}

static void Log(const struct MockCall* call, CK_RV result) {
  char line[200];
  size_t end = (size_t)snprintf(line, sizeof line, "%d %s", (int)getpid(), call->function);
  end += (size_t)PrintNumber(line + end, sizeof line - end, "slot", call->slot);
  end += (size_t)PrintNumber(line + end, sizeof line - end, "session", call->session);
  end += (size_t)PrintNumber(line + end, sizeof line - end, "size", call->size);
  end += (size_t)snprintf(line + end, sizeof line - end, " result=0x%lx\n", result);
  Append(line, end);
}

/* --- The frame of a call */

static void Hang(struct MockCall* call) {
  if (strcmp(call->script.hangs, call->function) != 0) return;
  Note("hangs", call->function);
  Unlock();
  for (int look = 0; look < kLongestHang && access(call->script.until, F_OK) != 0; ++look) {
    usleep(2000);
  }
  ReadMockScript(&call->script); /* the token may have gone meanwhile */
  Lock();
}

static bool IsFaulty(const struct MockCall* call) {
  const struct MockFault* const fault = &call->script.fault;
  if (fault->number != g_faultNumber) g_faultCalls = 0;
  g_faultNumber = fault->number;
  const bool isMeant = fault->function[0] == '*' || strcmp(fault->function, call->function) == 0;
  if (!isMeant) return false;
  ++g_faultCalls;
  return g_faultCalls >= fault->call && g_faultCalls - fault->call < fault->times;
}

CK_RV BeginMockCall(struct MockCall* call, const char* function) {
  call->function = function;
  call->slot = call->session = call->size = MOCK_NONE;
  ReadMockScript(&call->script);
  Lock();
  if (g_isCopy && call->script.noticesForks) FinalizeMock();
  g_isCopy = false;
  ++g_inside;
  if (g_inside > 1 && !call->script.locks) Note("overlaps", function);
  Hang(call);
  if (!g_isInitialized && strcmp(function, "C_Initialize") != 0)
    return CKR_CRYPTOKI_NOT_INITIALIZED;
  return IsFaulty(call) ? call->script.fault.result : CKR_OK;
}

CK_RV EndMockCall(struct MockCall* call, CK_RV result) {
  Log(call, result);
  --g_inside;
  Unlock();
  return result;
}

void SleepInMockCall(const struct MockCall* call) {
  if (call->script.micros == 0) return;
  Unlock();
  usleep((useconds_t)call->script.micros);
  Lock();
}

CK_RV InitializeMock(void) {
  if (g_isInitialized) return CKR_CRYPTOKI_ALREADY_INITIALIZED;
  g_isInitialized = true;
  return CKR_OK;
}

void FinalizeMock(void) {
  g_isInitialized = false;
  memset(g_sessions, 0, sizeof g_sessions);
}

/* --- Slots and tokens */

const struct MockSlot* FindMockSlot(const struct MockCall* call, CK_SLOT_ID id) {
  for (size_t i = 0; i < call->script.slotCount; ++i) {
    if (call->script.slots[i].id == id) return &call->script.slots[i];
  }
  return NULL;
}

static struct Token* TokenIn(const struct MockSlot* slot) {
  struct Token* const token = &g_tokens[slot->id % kMostSlots];
  if (token->life != slot->life) *token = (struct Token){slot->life, 0};
  return token;
}

bool IsMockTokenPresent(const struct MockSlot* slot) {
  return slot->isPresent && (slot->lastBytes == 0 || TokenIn(slot)->served < slot->lastBytes);
}

CK_ULONG ServeMockBytes(const struct MockSlot* slot, CK_ULONG size) {
  struct Token* const token = TokenIn(slot);
  const CK_ULONG left = slot->lastBytes == 0 ? size : slot->lastBytes - token->served;
  const CK_ULONG given = size < left ? size : left;
  token->served += given;
  return given;
}

bool HidesMockSlot(const struct MockCall* call) { return g_hidden++ < call->script.hides; }

/* --- Sessions */

CK_ULONG CountMockSessions(const struct MockSlot* slot) {
  CK_ULONG count = 0;
  for (int i = 0; i < kMostSessions; ++i) {
    count += g_sessions[i].handle != 0 && g_sessions[i].slot == slot->id &&
             g_sessions[i].life == slot->life;
  }
  return count;
}

CK_SESSION_HANDLE OpenMockSession(const struct MockSlot* slot) {
  for (int i = 0; i < kMostSessions; ++i) {
    if (g_sessions[i].handle != 0) continue;
    g_sessions[i] = (struct Session){++g_lastHandle, slot->id, slot->life};
    return g_lastHandle;
  }
  abort(); /* a leak that no case allows */
}

static struct Session* FindSession(CK_SESSION_HANDLE handle) {
  for (int i = 0; i < kMostSessions; ++i) {
    if (handle != 0 && g_sessions[i].handle == handle) return &g_sessions[i];
  }
  return NULL;
}

const struct MockSlot* FindMockSession(const struct MockCall* call, CK_SESSION_HANDLE handle) {
  const struct Session* const session = FindSession(handle);
  const struct MockSlot* const slot = session ? FindMockSlot(call, session->slot) : NULL;
  return slot && slot->life == session->life ? slot : NULL;
}

bool CloseMockSession(CK_SESSION_HANDLE handle) {
  struct Session* const session = FindSession(handle);
  if (session) *session = (struct Session){0, 0, 0};
  return session;
}

void CloseMockSessions(CK_SLOT_ID slot) {
  for (int i = 0; i < kMostSessions; ++i) {
    if (g_sessions[i].slot == slot) g_sessions[i] = (struct Session){0, 0, 0};
  }
}
