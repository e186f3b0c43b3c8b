/* What the mock module remembers between calls, and what each call begins and ends with. */
#ifndef TESTS_TOKEN_MODULES_MOCK_STATE_H
#define TESTS_TOKEN_MODULES_MOCK_STATE_H

#include "mock_script.h"

/* One call. It holds the module's lock from Begin to End, except while it hangs or takes its time. */
struct MockCall {
  const char* function;
  struct MockScript script;
  CK_SLOT_ID slot; /* for the log, like the next two */
  CK_SESSION_HANDLE session;
  CK_ULONG size;
};

#define MOCK_NONE ((CK_ULONG)-1)

/* Reads the script, hangs if that says so, and returns the result that the call must have, CKR_OK if it is free. */
CK_RV BeginMockCall(struct MockCall* call, const char* function);

/* Appends a line to the file that MOCK_LOG names, "PID FUNCTION slot=S session=H size=N result=0xR", and returns
   the result. Values that the call does not have are left out. */
CK_RV EndMockCall(struct MockCall* call, CK_RV result);

/* While others may call. */
void SleepInMockCall(const struct MockCall* call);

CK_RV InitializeMock(void);
void FinalizeMock(void);

const struct MockSlot* FindMockSlot(const struct MockCall* call, CK_SLOT_ID id);

/* Whether the token is in its slot, and has not given its last byte. */
bool IsMockTokenPresent(const struct MockSlot* slot);

/* Of the requested bytes, those that the token gives before it is gone. */
CK_ULONG ServeMockBytes(const struct MockSlot* slot, CK_ULONG size);

/* Whether the number of slots is to be reported one too small. */
bool HidesMockSlot(const struct MockCall* call);

CK_ULONG CountMockSessions(const struct MockSlot* slot);
CK_SESSION_HANDLE OpenMockSession(const struct MockSlot* slot);

/* Null when there is no such session, or when its token was taken out since it was opened. */
const struct MockSlot* FindMockSession(const struct MockCall* call, CK_SESSION_HANDLE session);
bool CloseMockSession(CK_SESSION_HANDLE session);
void CloseMockSessions(CK_SLOT_ID slot);

#endif
