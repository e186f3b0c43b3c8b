#include "tests/abi/settings_slots.h"

#include <stdio.h>
#include <string.h>

typedef void (*Slot)(void);
typedef const char* (*GetSlot)(void* self);
typedef bool (*SetSlot)(void* self, const char* text);

void RecordCallFromC(const char* who, const char* what);

struct Settings {
  const Slot* slots;
};

static struct Settings settings;

static const char* Get(const void* self, const char* operation, const char* text) {
  RecordCallFromC(self == &settings ? "settings" : "another object", operation);
  return text;
}

static bool Set(const void* self, const char* operation, const char* text) {
  char call[64];
  snprintf(call, sizeof call, "%s(%s)", operation, text ? text : "null");
  RecordCallFromC(self == &settings ? "settings" : "another object", call);
  return !text || strcmp(text, "refused") != 0;
}

static const char* GetType(void* self) { return Get(self, "GetType", "sobol"); }
static bool SetType(void* self, const char* type) { return Set(self, "SetType", type); }
static const char* GetHardwareId(void* self) { return Get(self, "GetHardwareId", "device 7"); }
static bool SetHardwareId(void* self, const char* hardwareId) {
  return Set(self, "SetHardwareId", hardwareId);
}
static const char* GetDsdrFilePath(void* self) {
  return Get(self, "GetDsdrFilePath", "/nowhere/dsdr.bin");
}

static const Slot slots[] = {(Slot)GetType, (Slot)SetType, (Slot)GetHardwareId, (Slot)SetHardwareId,
                             (Slot)GetDsdrFilePath};

static struct Settings settings = {slots};

void* SettingsInC(void) { return &settings; }

const char* CallGetSlot(void* object, size_t slot) {
  return ((GetSlot)((struct Settings*)object)->slots[slot])(object);
}

bool CallSetSlot(void* object, size_t slot, const char* text) {
  return ((SetSlot)((struct Settings*)object)->slots[slot])(object, text);
}
