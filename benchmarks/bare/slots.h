#ifndef BENCHMARKS_BARE_SLOTS_H
#define BENCHMARKS_BARE_SLOTS_H

// The library's two interfaces as C sees them: the first word of an object points to its table of
// functions, in the order in which the classes declare them.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

struct Rng {
  const struct RngSlots* slots;
};

struct RngSlots {
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

struct Settings {
  const struct SettingsSlots* slots;
};

struct SettingsSlots {
  const char* (*getType)(struct Settings* self);
  bool (*setType)(struct Settings* self, const char* type);
};

#endif
