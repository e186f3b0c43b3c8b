#ifndef TESTS_ABI_C_HEADER_FROM_C_H
#define TESTS_ABI_C_HEADER_FROM_C_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Written in C++: remembers a call that an object made in C received.
void NoteCall(const char* operation, const void* argument);

// --- Objects made in C++, called from C

/// What the operations returned, in the order of their slots.
struct ProviderAnswers {
  int32_t nameSize, descriptionSize, hardwareIdSize;
  bool isSelected, isGenerated, isAvailable, hasPassed;
  uint32_t flags;
};
struct SettingsAnswers {
  const char* type;
  bool isTypeStored;
  const char* hardwareId;
  bool isHardwareIdStored;
  const char* dsdrFilePath;
};

/// Calls each operation once, in the order of its slot. The caller's pointers reach the operations.
struct ProviderAnswers CallProvider(void* provider, char* buffer, size_t size, void* settings);
struct SettingsAnswers CallSettings(void* settings, const char* text);

// --- Objects made in C, with the operations named one by one. The Get operations return what
// kTextsInC and kNumbersInC hold at the index of the slot, the Set operations and the other tests
// `answerInC`.

extern const char* const kTextsInC[5];
extern const int32_t kNumbersInC[3];
extern const uint32_t kFlagsInC;
extern bool answerInC;
void* ProviderMadeInC(void);
void* SettingsMadeInC(void);

// --- The functions and variables as C sees them

typedef void (*AnyFunction)(void);
struct SeenFunction {
  const char* name;
  AnyFunction function;
};
struct SeenVariable {
  const char* name;
  const char** variable;
};
extern const struct SeenFunction kFunctionsInC[9];
extern const struct SeenVariable kVariablesInC[13];

/// What a run through all nine functions gave, with the settings made in C.
struct RunInC {
  bool wasStarted, isStarted, isStored, isStopped;
  int32_t available, isInteractive, hasDefault;
  void* absent;
  void* builtInSettings;
  char type[18], hardwareId[18];
};
struct RunInC RunHostInC(void);

#ifdef __cplusplus
}
#endif

#endif
