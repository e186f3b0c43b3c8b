#ifndef TESTS_ABI_SETTINGS_SLOTS_H
#define TESTS_ABI_SETTINGS_SLOTS_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A settings object in C, its table of five functions laid out by hand. The kind is "sobol", the
/// device "device 7"; every text can be stored but "refused". Logs its calls as "settings".
void* SettingsInC(void);

/// Calls the function in a slot of any settings object, as C sees it: through the object's first
/// word.
const char* CallGetSlot(void* settings, size_t slot);
bool CallSetSlot(void* settings, size_t slot, const char* text);

#ifdef __cplusplus
}
#endif

#endif
