// A plug-in in C. Its object and its table of functions are laid out by hand, as the compiler lays
// out an object of a C++ class: the first word points to the table. It logs what it was called for.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

void RecordCallFromC(const char* who, const char* what);

struct Rng {
  const struct SlotTable* slots;
};

struct SlotTable {
  int32_t (*getName)(struct Rng* self, char* buffer);
  int32_t (*getDescription)(struct Rng* self, char* buffer);
  int32_t (*getHardwareId)(struct Rng* self, char* buffer);
  bool (*selectDevice)(struct Rng* self, const char* hardwareId);
  bool (*generate)(struct Rng* self, void* buffer, size_t size);
  bool (*isAvailable)(struct Rng* self);
  bool (*selfTest)(struct Rng* self);
  void (*cancel)(struct Rng* self);
  uint32_t (*getFlags)(struct Rng* self);
  void (*setSettings)(struct Rng* self, void* settings);
  void (*release)(struct Rng* self);
};
_Static_assert(sizeof(struct SlotTable) == 11 * sizeof(void*), "eleven slots");

static struct Rng rng;

static void Log(const struct Rng* self, const char* what) {
  RecordCallFromC(self == &rng ? KIND : "another object", what);
}

static int32_t Report(const char* text, char* buffer) {
  const size_t size = strlen(text) + 1;
  if (buffer) memcpy(buffer, text, size);
  return (int32_t)size;
}

static int32_t GetName(struct Rng* self, char* buffer) {
  Log(self, buffer ? "GetName(buffer)" : "GetName(null)");
  return Report("slots", buffer);
}

static int32_t GetDescription(struct Rng* self, char* buffer) {
  Log(self, buffer ? "GetDescription(buffer)" : "GetDescription(null)");
  return Report("A table of eleven slots", buffer);
}

static int32_t GetHardwareId(struct Rng* self, char* buffer) {
  Log(self, buffer ? "GetHardwareId(buffer)" : "GetHardwareId(null)");
  return Report("device 7", buffer);
}

static bool SelectDevice(struct Rng* self, const char* hardwareId) {
  Log(self, "SelectDevice");
  return !hardwareId || strcmp(hardwareId, "device 7") == 0;
}

static bool Generate(struct Rng* self, void* buffer, size_t size) {
  Log(self, "Generate");
  memset(buffer, 0x5A, size);
  return true;
}

static bool IsAvailable(struct Rng* self) {
  Log(self, "IsAvailable");
  return true;
}

static bool SelfTest(struct Rng* self) {
  Log(self, "SelfTest");
  return false;  // unlike its neighbours
}

static void Cancel(struct Rng* self) { Log(self, "Cancel"); }

static uint32_t GetFlags(struct Rng* self) {
  Log(self, "GetFlags");
  return 0x80000001;
}

static void SetSettings(struct Rng* self, void* settings) {
  Log(self, settings ? "SetSettings" : "SetSettings(null)");
}

static void Release(struct Rng* self) { Log(self, "Release"); }

static const struct SlotTable slots = {
    GetName,  GetDescription, GetHardwareId, SelectDevice, Generate, IsAvailable,
    SelfTest, Cancel,         GetFlags,      SetSettings,  Release,
};

static struct Rng rng = {&slots};

__attribute__((visibility("default"))) struct Rng* FACTORY(void) {
  RecordCallFromC(KIND, "factory");
  return &rng;
}
