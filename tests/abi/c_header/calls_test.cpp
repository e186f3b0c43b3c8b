#include "tests/abi/c_header/from_c.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include <rngaggregator/aggregator.h>

using Calls = std::vector<std::pair<std::string, const void*>>;

static Calls g_calls;

void NoteCall(const char* operation, const void* argument) {
  g_calls.emplace_back(operation, argument);
}

namespace {

/// Larger than 32 bits, which a wrong type of the size would cut off.
constexpr std::size_t kLargeSize = 0x123456789A;

class NotingRng final : public IRngProvider {
 public:
  explicit NotingRng(bool value) : answer(value) {}

  std::int32_t GetName(char* buffer) override { return Note("GetName", buffer), 0x01234567; }
  std::int32_t GetDescription(char* buffer) override { return Note("GetDescription", buffer), -2; }
  std::int32_t GetHardwareId(char* buffer) override {
    return Note("GetHardwareId", buffer), 0x765432;
  }
  bool SelectDevice(const char* hardwareId) override {
    return Note("SelectDevice", hardwareId), answer;
  }
  bool Generate(void* buffer, std::size_t size) override {
    return Note("Generate", static_cast<const char*>(buffer) + size), answer;
  }
  bool IsAvailable() override { return Note("IsAvailable", this), answer; }
  bool SelfTest() override { return Note("SelfTest", this), answer; }
  void Cancel() override { Note("Cancel", this); }
  std::uint32_t GetFlags() override { return Note("GetFlags", this), 0x87654321; }
  void SetSettings(IRngSettings* settings) override { Note("SetSettings", settings); }
  void Release() override { Note("Release", this); }

 private:
  void Note(const char* operation, const void* argument) const { NoteCall(operation, argument); }

  const bool answer;
};

class NotingSettings final : public IRngSettings {
 public:
  explicit NotingSettings(bool value) : answer(value) {}

  const char* GetType() override { return NoteCall("GetType", this), "type"; }
  bool SetType(const char* type) override { return NoteCall("SetType", type), answer; }
  const char* GetHardwareId() override { return NoteCall("GetHardwareId", this), "hardwareId"; }
  bool SetHardwareId(const char* hardwareId) override {
    return NoteCall("SetHardwareId", hardwareId), answer;
  }
  const char* GetDsdrFilePath() override { return NoteCall("GetDsdrFilePath", this), "path"; }

 private:
  const bool answer;
};

Calls CallsOfAProvider(const void* rng, const char* buffer, std::size_t size,
                       const void* settings) {
  return {{"GetName", buffer},
          {"GetDescription", buffer},
          {"GetHardwareId", buffer},
          {"SelectDevice", buffer},
          {"Generate", buffer + size},
          {"IsAvailable", rng},
          {"SelfTest", rng},
          {"Cancel", rng},
          {"GetFlags", rng},
          {"SetSettings", settings},
          {"Release", rng}};
}

Calls CallsOfSettings(const void* settings, const char* text) {
  return {{"GetType", settings},
          {"SetType", text},
          {"GetHardwareId", settings},
          {"SetHardwareId", text},
          {"GetDsdrFilePath", settings}};
}

}  // namespace

class ObjectsOfBothLanguages : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override { answerInC = GetParam(); }

  const bool answer = GetParam();
  char buffer[4] = "abc";
};

TEST_P(ObjectsOfBothLanguages, ProviderMadeInCxxIsCalledFromC) {
  NotingRng rng(answer);
  NotingSettings settings(answer);
  const ProviderAnswers answers = CallProvider(&rng, buffer, kLargeSize, &settings);
  EXPECT_EQ(CallsOfAProvider(&rng, buffer, kLargeSize, &settings), g_calls);
  EXPECT_EQ(0x01234567, answers.nameSize);
  EXPECT_EQ(-2, answers.descriptionSize);
  EXPECT_EQ(0x765432, answers.hardwareIdSize);
  EXPECT_EQ(answer, answers.isSelected);
  EXPECT_EQ(answer, answers.isGenerated);
  EXPECT_EQ(answer, answers.isAvailable);
  EXPECT_EQ(answer, answers.hasPassed);
  EXPECT_EQ(0x87654321, answers.flags);
}

TEST_P(ObjectsOfBothLanguages, SettingsMadeInCxxAreCalledFromC) {
  NotingSettings settings(answer);
  const SettingsAnswers answers = CallSettings(&settings, buffer);
  EXPECT_EQ(CallsOfSettings(&settings, buffer), g_calls);
  EXPECT_STREQ("type", answers.type);
  EXPECT_EQ(answer, answers.isTypeStored);
  EXPECT_STREQ("hardwareId", answers.hardwareId);
  EXPECT_EQ(answer, answers.isHardwareIdStored);
  EXPECT_STREQ("path", answers.dsdrFilePath);
}

TEST_P(ObjectsOfBothLanguages, ProviderMadeInCIsCalledFromCxx) {
  auto* const rng = static_cast<IRngProvider*>(ProviderMadeInC());
  NotingSettings settings(answer);
  EXPECT_EQ(kNumbersInC[0], rng->GetName(buffer));
  EXPECT_EQ(kNumbersInC[1], rng->GetDescription(buffer));
  EXPECT_EQ(kNumbersInC[2], rng->GetHardwareId(buffer));
  EXPECT_EQ(answer, rng->SelectDevice(buffer));
  EXPECT_EQ(answer, rng->Generate(buffer, kLargeSize));
  EXPECT_EQ(answer, rng->IsAvailable());
  EXPECT_EQ(answer, rng->SelfTest());
  rng->Cancel();
  EXPECT_EQ(kFlagsInC, rng->GetFlags());
  rng->SetSettings(&settings);
  rng->Release();
  EXPECT_EQ(CallsOfAProvider(rng, buffer, kLargeSize, &settings), g_calls);
}

TEST_P(ObjectsOfBothLanguages, SettingsMadeInCAreCalledFromCxx) {
  auto* const settings = static_cast<IRngSettings*>(SettingsMadeInC());
  EXPECT_EQ(kTextsInC[0], settings->GetType());
  EXPECT_EQ(answer, settings->SetType(buffer));
  EXPECT_EQ(kTextsInC[2], settings->GetHardwareId());
  EXPECT_EQ(answer, settings->SetHardwareId(buffer));
  EXPECT_EQ(kTextsInC[4], settings->GetDsdrFilePath());
  EXPECT_EQ(CallsOfSettings(settings, buffer), g_calls);
}

INSTANTIATE_TEST_SUITE_P(Answers, ObjectsOfBothLanguages, testing::Bool());

TEST(FunctionsInC, AreThoseOfTheCxxHeader) {
#define SEEN(name) \
  { #name, reinterpret_cast < AnyFunction>(&(name)) }
  const SeenFunction expected[] = {
      SEEN(Initialize),      SEEN(ShutDown),      SEEN(IsInitialized),
      SEEN(GetAvailableRng), SEEN(GetRng),        SEEN(IsInteractiveRng),
      SEEN(GetDefaultRng),   SEEN(SetDefaultRng), SEEN(GetDefaultSettings),
  };
#undef SEEN
  ASSERT_EQ(std::size(expected), std::size(kFunctionsInC));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_STREQ(expected[i].name, kFunctionsInC[i].name);
    EXPECT_EQ(expected[i].function, kFunctionsInC[i].function) << expected[i].name;
  }
}

TEST(VariablesInC, AreThoseOfTheCxxHeader) {
#define SEEN(name) \
  { #name, &(name) }
  const SeenVariable expected[] = {
      SEEN(rngBioCore),     SEEN(rngBioX11), SEEN(rngUnixDev),    SEEN(rngBioKb),
      SEEN(rngGrandmaster), SEEN(rngDsdr),   SEEN(rngEsmartGost), SEEN(rngRuToken),
      SEEN(rngJacartaGost), SEEN(rngSobol),  SEEN(rngAccord),     SEEN(rngBioQt),
      SEEN(rngBioWin),
  };
#undef SEEN
  ASSERT_EQ(std::size(expected), std::size(kVariablesInC));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_STREQ(expected[i].name, kVariablesInC[i].name);
    EXPECT_EQ(expected[i].variable, kVariablesInC[i].variable) << expected[i].name;
  }
}

TEST(HostInC, RunsThroughAllFunctions) {
  answerInC = true;
  const RunInC run = RunHostInC();
  EXPECT_FALSE(run.wasStarted);
  EXPECT_TRUE(run.isStarted);
  EXPECT_EQ(0, run.available);  // no plug-in is installed beside the library in its build
  EXPECT_EQ(nullptr, run.absent);
  EXPECT_EQ(1, run.isInteractive);
  EXPECT_EQ(1, run.hasDefault);
  EXPECT_STREQ("sobol", run.type);
  EXPECT_STREQ("device 7", run.hardwareId);
  EXPECT_TRUE(run.isStored);
  EXPECT_EQ(GetDefaultSettings(), run.builtInSettings);
  EXPECT_TRUE(run.isStopped);
  const void* const settings = SettingsMadeInC();
  EXPECT_EQ((Calls{{"GetType", settings},
                   {"GetHardwareId", settings},
                   {"SetType", rngDsdr},
                   {"SetHardwareId", nullptr}}),
            g_calls);
}
