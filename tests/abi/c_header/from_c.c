#include "tests/abi/c_header/from_c.h"

#include <string.h>

#include <rngaggregator/aggregator_c.h>

// --- Objects made in C++

struct ProviderAnswers CallProvider(void* provider, char* buffer, size_t size, void* settings) {
  IRngProvider* const rng = provider;
  struct ProviderAnswers answers;
  answers.nameSize = rng->operations->GetName(rng, buffer);
  answers.descriptionSize = rng->operations->GetDescription(rng, buffer);
  answers.hardwareIdSize = rng->operations->GetHardwareId(rng, buffer);
  answers.isSelected = rng->operations->SelectDevice(rng, buffer);
  answers.isGenerated = rng->operations->Generate(rng, buffer, size);
  answers.isAvailable = rng->operations->IsAvailable(rng);
  answers.hasPassed = rng->operations->SelfTest(rng);
  rng->operations->Cancel(rng);
  answers.flags = rng->operations->GetFlags(rng);
  rng->operations->SetSettings(rng, settings);
  rng->operations->Release(rng);
  return answers;
}

struct SettingsAnswers CallSettings(void* settings, const char* text) {
  IRngSettings* const store = settings;
  struct SettingsAnswers answers;
  answers.type = store->operations->GetType(store);
  answers.isTypeStored = store->operations->SetType(store, text);
  answers.hardwareId = store->operations->GetHardwareId(store);
  answers.isHardwareIdStored = store->operations->SetHardwareId(store, text);
  answers.dsdrFilePath = store->operations->GetDsdrFilePath(store);
  return answers;
}

// --- Objects made in C

const char* const kTextsInC[5] = {"sobol", NULL, "device 7", NULL, "/nowhere/dsdr.bin"};
const int32_t kNumbersInC[3] = {0x01234567, 0x12345678, -2};
const uint32_t kFlagsInC = 0x87654321;
bool answerInC = false;

static const char* GetType(IRngSettings* self) {
  NoteCall("GetType", self);
  return kTextsInC[0];
}
static bool SetType(IRngSettings* self, const char* type) {
  (void)self;
  NoteCall("SetType", type);
  return answerInC;
}
static const char* GetSettingsHardwareId(IRngSettings* self) {
  NoteCall("GetHardwareId", self);
  return kTextsInC[2];
}
static bool SetHardwareId(IRngSettings* self, const char* hardwareId) {
  (void)self;
  NoteCall("SetHardwareId", hardwareId);
  return answerInC;
}
static const char* GetDsdrFilePath(IRngSettings* self) {
  NoteCall("GetDsdrFilePath", self);
  return kTextsInC[4];
}

static int32_t GetName(IRngProvider* self, char* buffer) {
  (void)self;
  NoteCall("GetName", buffer);
  return kNumbersInC[0];
}
static int32_t GetDescription(IRngProvider* self, char* buffer) {
  (void)self;
  NoteCall("GetDescription", buffer);
  return kNumbersInC[1];
}
static int32_t GetHardwareId(IRngProvider* self, char* buffer) {
  (void)self;
  NoteCall("GetHardwareId", buffer);
  return kNumbersInC[2];
}
static bool SelectDevice(IRngProvider* self, const char* hardwareId) {
  (void)self;
  NoteCall("SelectDevice", hardwareId);
  return answerInC;
}
static bool Generate(IRngProvider* self, void* buffer, size_t size) {
  (void)self;
  NoteCall("Generate", (const char*)buffer + size);
  return answerInC;
}
static bool IsAvailable(IRngProvider* self) {
  NoteCall("IsAvailable", self);
  return answerInC;
}
static bool SelfTest(IRngProvider* self) {
  NoteCall("SelfTest", self);
  return answerInC;
}
static void Cancel(IRngProvider* self) { NoteCall("Cancel", self); }
static uint32_t GetFlags(IRngProvider* self) {
  NoteCall("GetFlags", self);
  return kFlagsInC;
}
static void SetSettings(IRngProvider* self, IRngSettings* settings) {
  (void)self;
  NoteCall("SetSettings", settings);
}
static void Release(IRngProvider* self) { NoteCall("Release", self); }

static const RngSettingsOperations settingsOperations = {
    .GetType = GetType,
    .SetType = SetType,
    .GetHardwareId = GetSettingsHardwareId,
    .SetHardwareId = SetHardwareId,
    .GetDsdrFilePath = GetDsdrFilePath,
};
static IRngSettings settings = {&settingsOperations};

static const RngProviderOperations providerOperations = {
    .GetName = GetName,
    .GetDescription = GetDescription,
    .GetHardwareId = GetHardwareId,
    .SelectDevice = SelectDevice,
    .Generate = Generate,
    .IsAvailable = IsAvailable,
    .SelfTest = SelfTest,
    .Cancel = Cancel,
    .GetFlags = GetFlags,
    .SetSettings = SetSettings,
    .Release = Release,
};
static IRngProvider provider = {&providerOperations};

void* ProviderMadeInC(void) { return &provider; }
void* SettingsMadeInC(void) { return &settings; }

// --- The library

#define SEEN_FUNCTION(name) \
  { #name, (AnyFunction)name }
const struct SeenFunction kFunctionsInC[9] = {
    SEEN_FUNCTION(Initialize),      SEEN_FUNCTION(ShutDown),      SEEN_FUNCTION(IsInitialized),
    SEEN_FUNCTION(GetAvailableRng), SEEN_FUNCTION(GetRng),        SEEN_FUNCTION(IsInteractiveRng),
    SEEN_FUNCTION(GetDefaultRng),   SEEN_FUNCTION(SetDefaultRng), SEEN_FUNCTION(GetDefaultSettings),
};

#define SEEN_VARIABLE(name) \
  { #name, &name }
const struct SeenVariable kVariablesInC[13] = {
    SEEN_VARIABLE(rngBioCore),    SEEN_VARIABLE(rngBioX11),      SEEN_VARIABLE(rngUnixDev),
    SEEN_VARIABLE(rngBioKb),      SEEN_VARIABLE(rngGrandmaster), SEEN_VARIABLE(rngDsdr),
    SEEN_VARIABLE(rngEsmartGost), SEEN_VARIABLE(rngRuToken),     SEEN_VARIABLE(rngJacartaGost),
    SEEN_VARIABLE(rngSobol),      SEEN_VARIABLE(rngAccord),      SEEN_VARIABLE(rngBioQt),
    SEEN_VARIABLE(rngBioWin),
};

struct RunInC RunHostInC(void) {
  struct RunInC run;
  DefaultRngInfo info;
  run.wasStarted = IsInitialized();
  Initialize(&settings);
  run.isStarted = IsInitialized();
  run.available = GetAvailableRng(NULL, UINT32_MAX);
  run.absent = GetRng("absent");
  run.isInteractive = IsInteractiveRng(rngBioKb);
  run.hasDefault = GetDefaultRng(&info, kDefaultFallbackBioKb);
  memcpy(run.type, info.type, sizeof run.type);
  memcpy(run.hardwareId, info.hardwareId, sizeof run.hardwareId);
  run.isStored = SetDefaultRng(rngDsdr, NULL);
  run.builtInSettings = GetDefaultSettings();
  ShutDown();
  run.isStopped = !IsInitialized();
  return run;
}
