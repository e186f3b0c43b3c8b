// The C++ compiler reads the C header, too, into a namespace, and compares it with the C++ headers: the types of all
// functions and operations, the order of the slots, the record and the constants.

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <type_traits>

#include <rngaggregator/aggregator.h>

namespace in_c {
// Otherwise "struct IRngProvider" would be the C++ one.
struct IRngProvider;
struct IRngSettings;
struct DefaultRngInfo;
#include "aggregator_c_for_cxx.h"  // without the line that rejects C++, and with constants for macros
}  // namespace in_c

namespace {

// --- Types

template <typename Type>
struct Translation {
  using InC = Type;
};
template <>
struct Translation<IRngProvider*> {
  using InC = in_c::IRngProvider*;
};
template <>
struct Translation<IRngProvider**> {
  using InC = in_c::IRngProvider**;
};
template <>
struct Translation<IRngSettings*> {
  using InC = in_c::IRngSettings*;
};
template <>
struct Translation<DefaultRngInfo*> {
  using InC = in_c::DefaultRngInfo*;
};
template <typename Type>
using InC = typename Translation<Type>::InC;

template <typename Result, typename... Arguments>
auto Translate(Result (*)(Arguments...)) -> InC<Result> (*)(InC<Arguments>...);
template <typename Result, typename Self, typename... Arguments>
auto Translate(Result (Self::*)(Arguments...)) -> InC<Result> (*)(InC<Self*>, InC<Arguments>...);

#define SAME_FUNCTION(name) \
  static_assert(std::is_same_v<decltype(Translate(&::name)), decltype(&in_c::name)>);
SAME_FUNCTION(Initialize)
SAME_FUNCTION(ShutDown)
SAME_FUNCTION(IsInitialized)
SAME_FUNCTION(GetAvailableRng)
SAME_FUNCTION(GetRng)
SAME_FUNCTION(IsInteractiveRng)
SAME_FUNCTION(GetDefaultRng)
SAME_FUNCTION(SetDefaultRng)
SAME_FUNCTION(GetDefaultSettings)

#define SAME_VARIABLE(name) static_assert(std::is_same_v<decltype(::name), decltype(in_c::name)>);
SAME_VARIABLE(rngBioCore)
SAME_VARIABLE(rngBioX11)
SAME_VARIABLE(rngUnixDev)
SAME_VARIABLE(rngBioKb)
SAME_VARIABLE(rngGrandmaster)
SAME_VARIABLE(rngDsdr)
SAME_VARIABLE(rngEsmartGost)
SAME_VARIABLE(rngRuToken)
SAME_VARIABLE(rngJacartaGost)
SAME_VARIABLE(rngSobol)
SAME_VARIABLE(rngAccord)
SAME_VARIABLE(rngBioQt)
SAME_VARIABLE(rngBioWin)

#define SAME_CONSTANT(name)                                              \
  static_assert(std::is_same_v<decltype(::name), decltype(in_c::name)>); \
  static_assert(::name == in_c::name);
SAME_CONSTANT(kRngNameSize)
SAME_CONSTANT(kRngCapabilityHardware)
SAME_CONSTANT(kRngCapabilityNeedsUser)
SAME_CONSTANT(kRngCapabilityOperatingSystem)
SAME_CONSTANT(kRngCapabilityPrerecorded)
SAME_CONSTANT(kRngCapabilityMayBlock)
SAME_CONSTANT(kDefaultFallbackBio)
SAME_CONSTANT(kDefaultFallbackBioQt)
SAME_CONSTANT(kDefaultFallbackBioX11)
SAME_CONSTANT(kDefaultFallbackBioKb)

#define SAME_FIELD(name)                                                                     \
  static_assert(                                                                             \
      std::is_same_v<decltype(DefaultRngInfo::name), decltype(in_c::DefaultRngInfo::name)>); \
  static_assert(offsetof(DefaultRngInfo, name) == offsetof(in_c::DefaultRngInfo, name));
SAME_FIELD(type)
SAME_FIELD(hardwareId)
static_assert(sizeof(DefaultRngInfo) == sizeof(in_c::DefaultRngInfo));
static_assert(alignof(DefaultRngInfo) == alignof(in_c::DefaultRngInfo));

static_assert(sizeof(IRngProvider) == sizeof(in_c::IRngProvider));
static_assert(sizeof(IRngSettings) == sizeof(in_c::IRngSettings));
static_assert(offsetof(in_c::IRngProvider, operations) == 0);
static_assert(offsetof(in_c::IRngSettings, operations) == 0);

// --- Slots

/// Where the function is in the virtual table. A pointer to a virtual function holds that, plus 1.
template <typename Function>
std::size_t PlaceInTable(Function function) {
  std::array<std::size_t, 2> words{};
  static_assert(sizeof words == sizeof function);
  std::memcpy(words.data(), &function, sizeof function);
  EXPECT_EQ(1U, words[0] % 2) << "not virtual";
  return words[0] - 1;
}

/// What one more virtual function would get is the size of the table.
struct LongerProvider : IRngProvider {
  virtual void OneMore() = 0;
};
struct LongerSettings : IRngSettings {
  virtual void OneMore() = 0;
};

}  // namespace

#define EXPECT_SAME_SLOT(table, interface, name)                                             \
  do {                                                                                       \
    static_assert(                                                                           \
        std::is_same_v<decltype(Translate(&interface::name)), decltype(in_c::table::name)>); \
    EXPECT_EQ(PlaceInTable(&interface::name), offsetof(in_c::table, name)) << #name;         \
  } while (false)

TEST(OperationsInC, OfAProviderAreInItsSlots) {
#define EXPECT_SLOT(name) EXPECT_SAME_SLOT(RngProviderOperations, IRngProvider, name)
  EXPECT_SLOT(GetName);
  EXPECT_SLOT(GetDescription);
  EXPECT_SLOT(GetHardwareId);
  EXPECT_SLOT(SelectDevice);
  EXPECT_SLOT(Generate);
  EXPECT_SLOT(IsAvailable);
  EXPECT_SLOT(SelfTest);
  EXPECT_SLOT(Cancel);
  EXPECT_SLOT(GetFlags);
  EXPECT_SLOT(SetSettings);
  EXPECT_SLOT(Release);
#undef EXPECT_SLOT
  EXPECT_EQ(PlaceInTable(&LongerProvider::OneMore), sizeof(in_c::RngProviderOperations));
}

TEST(OperationsInC, OfSettingsAreInTheirSlots) {
#define EXPECT_SLOT(name) EXPECT_SAME_SLOT(RngSettingsOperations, IRngSettings, name)
  EXPECT_SLOT(GetType);
  EXPECT_SLOT(SetType);
  EXPECT_SLOT(GetHardwareId);
  EXPECT_SLOT(SetHardwareId);
  EXPECT_SLOT(GetDsdrFilePath);
#undef EXPECT_SLOT
  EXPECT_EQ(PlaceInTable(&LongerSettings::OneMore), sizeof(in_c::RngSettingsOperations));
}
