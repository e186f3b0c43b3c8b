// A plug-in of one kind that does as little as possible.

#include "benchmarks/bare/slots.h"

#include <string.h>

static int32_t GetName(struct Rng* self, char* buffer) {
  (void)self;
  if (buffer) memcpy(buffer, KIND, sizeof KIND);
  return sizeof KIND;
}

static int32_t GetNothing(struct Rng* self, char* buffer) { return (void)self, (void)buffer, 0; }
static bool SelectDevice(struct Rng* self, const char* id) { return (void)self, !id || !*id; }
static bool Generate(struct Rng* self, void* buffer, size_t size) {
  (void)self;
  if (size) memset(buffer, 0, size);
  return size == 0;
}
static bool IsAvailable(struct Rng* self) { return (void)self, true; }
static void Cancel(struct Rng* self) { (void)self; }
static uint32_t GetFlags(struct Rng* self) { return (void)self, 1; }
static void SetSettings(struct Rng* self, void* settings) { (void)self, (void)settings; }

static const struct RngSlots slots = {
    GetName,     GetNothing, GetNothing, SelectDevice, Generate, IsAvailable,
    IsAvailable, Cancel,     GetFlags,   SetSettings,  Cancel,
};
static struct Rng rng = {&slots};

__attribute__((visibility("default"))) struct Rng* FACTORY(void) { return &rng; }
