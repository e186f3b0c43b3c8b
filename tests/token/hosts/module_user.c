/* module_user MODULE COUNT: uses a PKCS#11 module COUNT times in the way a token plug-in does, from loading to
   unloading, without any code of the plug-in. Prints by how many bytes the heap has grown. */
#include <malloc.h>
#include <p11-kit/p11-kit.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

enum { kWarmUp = 1, kMostSlots = 16, kDraws = 3 }; /* two when it starts, and one */

static bool Draw(CK_FUNCTION_LIST* module) {
  CK_SLOT_ID slots[kMostSlots];
  CK_ULONG count = kMostSlots;
  CK_SESSION_HANDLE session = 0;
  unsigned char bytes[32];
  return module->C_GetSlotList(CK_TRUE, slots, &count) == CKR_OK && count > 0 &&
         module->C_OpenSession(slots[0], CKF_SERIAL_SESSION, NULL, NULL, &session) == CKR_OK &&
         module->C_GenerateRandom(session, bytes, sizeof bytes) == CKR_OK &&
         module->C_CloseSession(session) == CKR_OK;
}

/* p11-kit unmaps only what is released as a list. */
static void Release(CK_FUNCTION_LIST* module) {
  CK_FUNCTION_LIST** const list = calloc(2, sizeof(CK_FUNCTION_LIST*));
  list[0] = module;
  p11_kit_modules_release(list);
}

static bool Use(const char* path) {
  CK_FUNCTION_LIST* const module = p11_kit_module_load(path, 0);
  if (!module) return false;
  bool isDrawn = p11_kit_module_initialize(module) == CKR_OK;
  for (int i = 0; i < kDraws; ++i) isDrawn = isDrawn && Draw(module);
  p11_kit_module_finalize(module);
  Release(module);
  return isDrawn;
}

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const int uses = atoi(arguments[2]);
  size_t before = 0;
  for (int i = 0; i < kWarmUp + uses; ++i) {
    if (i == kWarmUp) before = mallinfo2().uordblks;
    if (!Use(arguments[1])) return 1;
  }
  printf("%ld\n", (long)(mallinfo2().uordblks - before));
  return 0;
}
