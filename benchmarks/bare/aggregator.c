// The library's operations in a single page of C: the same calls of the system, of the plug-ins and
// of the known-path service in the same order, and nothing else. It exports the library's names, so
// that one host can measure both.

#include "benchmarks/bare/profile.h"
#include "benchmarks/bare/slots.h"

#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

// Strict C has no conversion from the result of dlsym to a function pointer.
#pragma GCC diagnostic ignored "-Wpedantic"

#define EXPORT __attribute__((visibility("default")))

enum { kRows = 12, kDirectory = 256, kValue = 512, kSettingsDirectory = 2 };

struct Row {
  const char* file;
  const char* factory;
  bool needsDisplay;
};

static const struct Row rows[kRows] = {
    {"librngbioqt.so", "GetBioQtRng", true},
    {"librngbiox11.so", "GetBioX11Rng", true},
    {"librngdsdr.so", "GetDsdrRng", false},
    {"librngaccord.so", "GetAccordRng", false},
    {"librngsobol.so", "GetSobolRng", false},
    {"librngjacartagost.so", "GetJacartaGostRng", false},
    {"librngrutoken.so", "GetRuTokenRng", false},
    {"librngesmartgost.so", "GetEsmartGostRng", false},
    {"librngbiokb.so", "GetBioKbRng", false},
    {"librngunixdev.so", "GetUnixDevRng", false},
    {"librnggrandmaster.so", "GetGrandmasterRng", false},
    {"librngbiocore.so", "GetBioCoreRng", false},
};

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static int64_t startCount;
static size_t count;
static void* handles[kRows];
static struct Rng* providers[kRows];

static bool ProbeXDisplay(void) {
  void* const x11 = dlopen("libX11.so.6", RTLD_LAZY);
  if (!x11) return false;
  bool hasDisplay = false;
  void* (*openDisplay)(const char*) = (void* (*)(const char*))dlsym(x11, "XOpenDisplay");
  void* const display = dlerror() ? NULL : openDisplay(NULL);
  if (display) {
    int (*closeDisplay)(void*) = (int (*)(void*))dlsym(x11, "XCloseDisplay");
    hasDisplay = !dlerror();
    if (hasDisplay) closeDisplay(display);
  }
  dlclose(x11);
  return hasDisplay;
}

static void Load(const struct Row* row, void* settings) {
  const bool hasDisplay = ProbeXDisplay();
  if (row->needsDisplay && !hasDisplay) return;
  void* const handle = dlopen(row->file, RTLD_LAZY | RTLD_GLOBAL);
  if (!handle) return;
  void* const factory = dlsym(handle, row->factory);
  struct Rng* const provider = factory ? ((struct Rng * (*)(void)) factory)() : NULL;
  if (provider) {
    provider->slots->setSettings(provider, settings);
    if (provider->slots->isAvailable(provider)) {
      handles[count] = handle;
      providers[count++] = provider;
      return;
    }
    provider->slots->release(provider);
  }
  dlclose(handle);
}

EXPORT void Initialize(void* settings) {
  pthread_mutex_lock(&lock);
  if (++startCount == 1) {
    for (size_t i = 0; i < kRows; ++i) Load(&rows[i], settings);
  }
  pthread_mutex_unlock(&lock);
}

EXPORT void ShutDown(void) {
  pthread_mutex_lock(&lock);
  if (--startCount == 0) {
    for (size_t i = 0; i < count; ++i) {
      providers[i]->slots->release(providers[i]);
      dlclose(handles[i]);
    }
    count = 0;
  }
  pthread_mutex_unlock(&lock);
}

EXPORT struct Rng* GetRng(const char* name) {
  for (size_t i = 0; i < count; ++i) {
    struct Rng* const provider = providers[i];
    const int32_t size = provider->slots->getName(provider, NULL);
    if (size <= 0) continue;
    char* const reported = malloc((size_t)size);
    memset(reported, 0, (size_t)size);
    const bool isNamed = provider->slots->getName(provider, reported) == size;
    const bool isEqual = isNamed && strcmp(reported, name) == 0;
    free(reported);
    if (isEqual) return provider;
  }
  return NULL;
}

EXPORT int32_t GetAvailableRng(struct Rng** found, uint32_t mask) {
  int32_t matches = 0;
  for (size_t i = 0; i < count; ++i) {
    if ((providers[i]->slots->getFlags(providers[i]) & mask) == 0) continue;
    if (found) found[matches] = providers[i];
    ++matches;
  }
  return matches;
}

extern int32_t CKP_GetPath(int32_t id, char* buffer, uint64_t* size, void* reserved)
    __attribute__((weak, visibility("default")));
typedef int32_t (*GetPath)(int32_t, char*, uint64_t*, void*);

static bool FindSettingsFile(char path[kValue]) {
  uint64_t size = kDirectory;
  memset(path, 0, kDirectory);
  GetPath getPath = CKP_GetPath;
  void* library = NULL;
  if (!getPath) {
    library = dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NODELETE);
    if (library) getPath = (GetPath)dlsym(library, "CKP_GetPath");
  }
  const bool isFound = getPath && getPath(kSettingsDirectory, path, &size, NULL) == 0;
  if (library) dlclose(library);
  if (isFound) strcat(path, "/rng.ini");
  return isFound;
}

static char lastType[kValue];

static const char* GetType(struct Settings* self) {
  (void)self;
  char path[kValue];
  if (!FindSettingsFile(path)) return NULL;
  return ReadValue(path, "Devices", "RandomNumberGeneratorType", lastType, sizeof lastType)
             ? lastType
             : NULL;
}

static bool SetType(struct Settings* self, const char* type) {
  (void)self;
  char path[kValue];
  if (!FindSettingsFile(path) || access(path, F_OK) != 0) return false;
  return FindSettingsFile(path) && WriteValue(path, "Devices", "RandomNumberGeneratorType", type);
}

static const struct SettingsSlots settingsSlots = {GetType, SetType};
static struct Settings defaultSettings = {&settingsSlots};

EXPORT struct Settings* GetDefaultSettings(void) { return &defaultSettings; }
