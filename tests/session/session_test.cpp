// Sessions with fake plug-ins and with the reference plug-in's kind.

#include "tests/session/linked_library.h"
#include "tests/session/own_provider.h"
#include "tests/support/fake_settings.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <memory>

#include <rngaggregator/session.h>

using rng::ErrorCode;
using testing::HasSubstr;
using testing::Pair;

namespace {

// Not all zero, and not all equal: the fakes of this file draw from the system.
template <typename Bytes>
bool LooksDrawn(const Bytes& bytes) {
  return std::count(bytes.begin(), bytes.end(), bytes[0]) < 8;
}

FakeSettings Choosing(const std::string& type, const std::string& device = "") {
  FakeSettings settings;
  settings.type = type;
  settings.hardwareId = device;
  return settings;
}

}  // namespace

// --- Start and stop

TEST(Session, StartsWithTheBuiltInSettingsAndStops) {
  InstallPlugin("dsdr");
  {
    const rng::Session session;
    EXPECT_EQ("opened factory SetSettings IsAvailable", CallLog("dsdr"));
    EXPECT_EQ(GetDefaultSettings(), Fake("dsdr").settings);
  }
  EXPECT_EQ("opened factory SetSettings IsAvailable Release closed", CallLog("dsdr"));
  EXPECT_EQ(0, g_unmatchedStarts);
}

TEST(Session, StartsWithTheSettingsOfTheHost) {
  InstallPlugin("dsdr");
  FakeSettings settings;
  { const rng::Session session(&settings); }
  EXPECT_EQ(&settings, Fake("dsdr").settings);
  { const rng::Session session(nullptr); }
  EXPECT_EQ(nullptr, Fake("dsdr").settings);
}

TEST(Session, EndsWithTheLastCopy) {
  InstallPlugin("dsdr");
  auto first = std::make_unique<rng::Session>();
  auto second = std::make_unique<rng::Session>(*first);
  const auto third = std::make_unique<rng::Session>(std::move(*second));
  first->Find("dsdr");
  first.reset();
  EXPECT_EQ(1, g_unmatchedStarts);
  second->Find("dsdr");
  second.reset();
  third->Find("dsdr");
  EXPECT_TRUE(third->Stop());
  EXPECT_EQ(0, g_unmatchedStarts);
}

TEST(Session, IsKeptAliveByGeneratorsAndEngines) {
  InstallPlugin("dsdr", "stub");
  auto session = std::make_unique<rng::Session>();
  auto generator = std::make_unique<rng::Generator>(session->Find("dsdr"));
  session.reset();
  EXPECT_TRUE(LooksDrawn(generator->Bytes<64>()));
  auto engine = std::make_unique<rng::Engine>(*generator);
  generator.reset();
  EXPECT_NE((*engine)(), (*engine)());
  EXPECT_TRUE(IsInitialized());
  engine.reset();
  EXPECT_FALSE(IsInitialized());
}

TEST(Session, SharesTheStartOfAnotherUser) {
  InstallPlugin("dsdr");
  Initialize(nullptr);
  FakeSettings settings;
  { const rng::Session session(&settings); }
  EXPECT_EQ(nullptr, Fake("dsdr").settings);
  EXPECT_TRUE(IsInitialized());
  EXPECT_EQ(0U, CountCalls("dsdr", "Release"));
  ShutDown();
}

TEST(Session, ReportsWhetherAStopWasTheLast) {
  InstallPlugin("dsdr", "stub");
  rng::Session session;
  auto generator = std::make_unique<rng::Generator>(session.Find("dsdr"));
  EXPECT_FALSE(session.Stop());
  EXPECT_TRUE(LooksDrawn(generator->Bytes<64>()));
  generator.reset();
  EXPECT_FALSE(IsInitialized());
}

TEST(Session, ThrowsFromEveryCallAfterStop) {
  rng::Session session;
  EXPECT_TRUE(session.Stop());
  const auto stopped =
      Pair(ErrorCode::kStopped, "This session has been stopped. Make another rng::Session.");
  EXPECT_THAT(ErrorOf([&] { session.Default(); }), stopped);
  EXPECT_THAT(ErrorOf([&] { session.Find("dsdr"); }), stopped);
  EXPECT_THAT(ErrorOf([&] { session.Stop(); }), stopped);
  EXPECT_EQ(0, g_unmatchedStarts);
}

TEST(Session, IsStoppedSeparatelyInAForkedCopy) {
  InstallPlugin("dsdr", "stub");
  auto session = std::make_unique<rng::Session>();
  const Result child = RunForked([&] {
    if (!LooksDrawn(session->Find("dsdr").Bytes<64>())) return 1;
    session.reset();
    return IsInitialized() ? 2 : 0;
  });
  EXPECT_EQ(0, child.status);
  EXPECT_TRUE(LooksDrawn(session->Find("dsdr").Bytes<64>()));
}

TEST(Session, StopsAtExitBeforeItsPluginsAreDestroyedIfItIsStatic) {
  InstallPlugin("dsdr");
  const auto exitWithStatic = [] {
    std::atexit([] { std::fputs(CallLog("dsdr").c_str(), stderr); });
    static const rng::Session session;
    std::exit(0);
  };
  EXPECT_EXIT(exitWithStatic(), testing::ExitedWithCode(0), "IsAvailable Release closed$");
}

// --- The default

TEST(Session, FindsTheConfiguredDefaultAndSelectsItsDevice) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  FakeSettings settings = Choosing("dsdr", "r2");
  const rng::Generator generator = rng::Session(&settings).Default();
  EXPECT_EQ("dsdr", generator.Name());
  EXPECT_EQ("r2", generator.Device());
}

TEST(Session, ThrowsWithoutADefaultUnlessTheMaskAcceptsAnother) {
  InstallPlugin("biokbd", "stub");
  FakeSettings settings;
  const rng::Session session(&settings);
  EXPECT_THAT(
      ErrorOf([&] { session.Default(); }),
      Pair(ErrorCode::kNoDefault,
           "No default generator is configured for this user, or the settings cannot be read. Run "
           "\"rngctl default set KIND\" to choose one, or \"rngctl default\" to see what is "
           "configured."));
  EXPECT_EQ("biokbd", session.Default(kDefaultFallbackBioKb).Name());
}

TEST(Session, DoesNotReplaceADefaultThatIsNotUsable) {
  InstallPlugin("dsdr", "has_devices");
  FakeSettings settings = Choosing("sobol");
  const rng::Session session(&settings);
  EXPECT_THAT(
      ErrorOf([&] { session.Default(kDefaultFallbackBioKb); }),
      Pair(ErrorCode::kNoSuchGenerator,
           "The generator \"sobol\" is not loaded. Run \"rngctl doctor sobol\" to find out why."));
  settings = Choosing("dsdr", "C3");
  EXPECT_THAT(ErrorOf([&] { session.Default(); }),
              Pair(ErrorCode::kDeviceMissing,
                   "The generator \"dsdr\" refuses the device \"C3\". Run \"rngctl list\" to see "
                   "the devices."));
}

// --- By name

TEST(Session, SelectsADeviceOnlyIfOneIsNamed) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  const rng::Session session;
  EXPECT_EQ("r1", session.Find("dsdr", "r1").Device());
  EXPECT_EQ("r1", session.Find("dsdr").Device());
  const rng::Generator first = session.Find("dsdr");
  EXPECT_EQ("r2", session.Find("dsdr", "r2").Device());
  EXPECT_EQ("r2", first.Device());
}

TEST(Session, SelectsNothingIfNoDeviceIsConfigured) {
  InstallPlugin("dsdr", "breaking/refuses_the_empty_device");
  FakeSettings settings = Choosing("dsdr");
  const rng::Session session(&settings);
  EXPECT_EQ("dsdr", session.Find("dsdr").Name());
  EXPECT_EQ("dsdr", session.Default().Name());
}

TEST(Session, RefusesInvalidNamesAndDevices) {
  InstallPlugin("dsdr", "has_devices");
  InstallPlugin("accord", "nameless");
  const rng::Session session;
  EXPECT_THAT(ErrorOf([&] { session.Find(""); }),
              Pair(ErrorCode::kNoSuchGenerator,
                   "The name of the generator is empty. Run \"rngctl list\" to see the names."));
  const std::string nul("\0more", 5);
  EXPECT_EQ(ErrorCode::kNoSuchGenerator, ErrorOf([&] { session.Find("dsdr" + nul); }).first);
  EXPECT_EQ(ErrorCode::kDeviceMissing, ErrorOf([&] { session.Find("dsdr", "A1" + nul); }).first);
  EXPECT_EQ("dsdr", session.Find("dsdr", "A1").Name());
}

TEST(Session, SharesTheChecksOfOneGeneratorOnly) {
  InstallPlugin("dsdr", "drawing/TurnConstant");
  InstallPlugin("sobol", "stub");
  const rng::Session session;
  session.Find("dsdr").Bytes<64>();
  EXPECT_EQ(ErrorCode::kAlarm, ErrorOf([&] { session.Find("dsdr").Bytes<64>(); }).first);
  EXPECT_EQ(ErrorCode::kAlarm, ErrorOf([&] { session.Find("dsdr").Bytes<1>(); }).first);
  EXPECT_TRUE(LooksDrawn(session.Find("sobol").Bytes<64>()));
  EXPECT_EQ(&session.Find("dsdr").Provider(), &session.Find("dsdr").Provider());
  EXPECT_EQ(1U, rng::Session().Find("dsdr").Bytes<1>().size());
}

TEST(Session, PassesOnTheBytesAndFailuresOfThePlugin) {
  InstallPlugin("dsdr", "failing_device");
  const rng::Generator generator = rng::Session().Find("dsdr", "X1");
  EXPECT_EQ(ErrorCode::kDrawFailed, ErrorOf([&] { generator.Bytes<32>(); }).first);
}
