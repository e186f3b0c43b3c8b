// Breaks nothing, and is written in C: object and table of functions as a C++ compiler lays them out.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/random.h>

struct SlotTable;
struct Rng {
  const struct SlotTable* slots;
};

static int32_t Report(const char* text, char* buffer) {
  const size_t size = strlen(text) + 1;
  if (buffer) memcpy(buffer, text, size);
  return (int32_t)size;
}

static int32_t GetName(struct Rng* self, char* buffer) {
  (void)self;
  return Report(KIND, buffer);
}

static int32_t GetDescription(struct Rng* self, char* buffer) {
  (void)self;
  return Report("A source in C", buffer);
}

static int32_t GetHardwareId(struct Rng* self, char* buffer) {
  (void)self;
  return Report("X1", buffer);
}

static bool SelectDevice(struct Rng* self, const char* hardwareId) {
  (void)self;
  return !hardwareId || !*hardwareId || strcmp(hardwareId, "X1") == 0;
}

static bool Generate(struct Rng* self, void* buffer, size_t size) {
  (void)self;
  unsigned char* const bytes = buffer;
  for (size_t done = 0; done < size;) {
    const ssize_t count = getrandom(bytes + done, size - done, 0);
    if (count > 0) done += (size_t)count;
  }
  return true;
}

static bool Affirm(struct Rng* self) {
  (void)self;
  return true;
}

static uint32_t GetFlags(struct Rng* self) {
  (void)self;
  return 1;
}

static void SetSettings(struct Rng* self, void* settings) {
  (void)self;
  (void)settings;
}

static void DoNothing(struct Rng* self) { (void)self; }

static const struct SlotTable {
  int32_t (*getName)(struct Rng*, char*);
  int32_t (*getDescription)(struct Rng*, char*);
  int32_t (*getHardwareId)(struct Rng*, char*);
  bool (*selectDevice)(struct Rng*, const char*);
  bool (*generate)(struct Rng*, void*, size_t);
  bool (*isAvailable)(struct Rng*);
  bool (*selfTest)(struct Rng*);
  void (*cancel)(struct Rng*);
  uint32_t (*getFlags)(struct Rng*);
  void (*setSettings)(struct Rng*, void*);
  void (*release)(struct Rng*);
} slots = {GetName, GetDescription, GetHardwareId, SelectDevice, Generate, Affirm,
           Affirm,  DoNothing,      GetFlags,      SetSettings,  DoNothing};

__attribute__((visibility("default"))) struct Rng* FACTORY(void) {
  static struct Rng rng = {&slots};
  return &rng;
}
