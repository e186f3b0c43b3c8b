// The default generator, its settings and their file.

#include "tests/faults/fault_sweep.h"

#include <gtest/gtest.h>

namespace {

using Names = std::set<std::string>;

const auto kNothing = [](auto&) {};
const auto kStart = [](auto& library) { library.Initialize(library.GetDefaultSettings()); };
const auto kStartAndStop = [](auto& library) {
  library.Initialize(library.GetDefaultSettings());
  library.ShutDown();
};
const auto kStartTwice = [](auto& library) {
  library.Initialize(library.GetDefaultSettings());
  library.Initialize(nullptr);
};

// 17 characters are more than a string holds in itself.
const std::string kProfile =
    "[Other]\nPort=1\n\n[Devices]\nRandomNumberGeneratorType=seventeen-letters\n"
    "RandomNumberGeneratorHardwareID=17-characters-id.\n";
// Rewritten character by character: kept short.
const std::string kKeyedProfile = "[Devices]\r\nRandomNumberGeneratorType=a\nPort=1\n\nK=v\n";
const std::string kForeignProfile = "[Other]\nKey=value\nlost";

const std::vector<std::string> kOne = {"unixdev"};

const Names kLookup = {"dlclose", "dlopen", "dlsym", "known path", "operator new"};
const Names kRead = {"fclose r", "fgets", "fopen r"};
const Names kDirectories = {"access"};
const Names kRewrite = {"fclose r", "fclose w", "fopen r", "fopen w",
                        "getc",     "rename",   "unlink",  "write"};

Names operator+(Names names, const Names& more) {
  names.insert(more.begin(), more.end());
  return names;
}

void SweepGet(const std::string& state, const Names& faults, const Arrangement& arrangement,
              const Steps<void>& prelude) {
  FaultSweep{"GetDefaultRng",
             state,
             faults,
             arrangement,
             prelude,
             [](auto& library) { return DefaultOf(library, 0xF); },
             false}
      .Run();
}

void SweepSet(const std::string& state, const Names& faults, const Arrangement& arrangement,
              const Steps<void>& prelude) {
  FaultSweep{"SetDefaultRng",
             state,
             faults,
             arrangement,
             prelude,
             [](auto& library) -> std::string {
               return library.SetDefaultRng("dsdr", "id-5") ? "stored" : "refused";
             },
             false}
      .Run();
}

template <typename Call>
void SweepSettings(const std::string& state, const Names& faults, const Arrangement& arrangement,
                   Call call) {
  FaultSweep{"GetDefaultSettings",
             "its " + state,
             faults,
             arrangement,
             kNothing,
             [call](auto& library) -> std::string { return call(*library.GetDefaultSettings()); },
             false}
      .Run();
}

std::string TextOf(const char* text) { return text ? text : "null"; }

}  // namespace

// --- GetDefaultRng

TEST(GetDefaultRngFaults, WithoutPluginsAndWithAProfile) {
  SweepGet("no plug-in, existing profile", kLookup + kRead, {.profile = kProfile}, kStart);
}

TEST(GetDefaultRngFaults, WithoutPluginsAndAnUnwritableProfile) {
  SweepGet("no plug-in, unwritable profile", kLookup + kRead,
           {.profile = kProfile, .isUnwritable = true}, kStart);
}

TEST(GetDefaultRngFaults, WithOnePluginAndNoProfile) {
  SweepGet("one plug-in, no profile", kLookup + Names{"fopen r"}, {.plugins = kOne}, kStart);
}

TEST(GetDefaultRngFaults, WithOnePluginAndAProfile) {
  SweepGet("one plug-in, existing profile", kLookup + kRead, {.plugins = kOne, .profile = kProfile},
           kStartTwice);
}

TEST(GetDefaultRngFaults, WithTwelvePluginsAndNoProfile) {
  SweepGet("12 plug-ins, no profile", kLookup + Names{"fopen r"},
           {.plugins = KindNames(), .hasDisplay = true}, kStart);
}

TEST(GetDefaultRngFaults, WithTwelvePluginsAndAProfile) {
  SweepGet("12 plug-ins, existing profile", kLookup + kRead,
           {.plugins = KindNames(), .hasDisplay = true, .profile = kProfile}, kStart);
}

TEST(GetDefaultRngFaults, WithTwelvePluginsAndAHostsSettings) {
  SweepGet("12 plug-ins, a host's settings", {"operator new"},
           {.plugins = KindNames(), .hasDisplay = true},
           [](auto& library) { library.Initialize(library.HostSettings()); });
}

// --- SetDefaultRng

TEST(SetDefaultRngFaults, WithoutPluginsIntoANewProfile) {
  SweepSet("no plug-in, new profile", kLookup + kDirectories + kRewrite + Names{"mkdir"}, {},
           kStart);
}

TEST(SetDefaultRngFaults, WithOnePluginIntoAProfile) {
  SweepSet("one plug-in, existing profile", kLookup + kDirectories + kRewrite,
           {.plugins = kOne, .profile = kKeyedProfile}, kStart);
}

TEST(SetDefaultRngFaults, WithTwelvePluginsIntoAProfileWithoutTheSection) {
  SweepSet("12 plug-ins, profile without the section", kLookup + kDirectories + kRewrite,
           {.plugins = KindNames(), .hasDisplay = true, .profile = kForeignProfile}, kStart);
}

TEST(SetDefaultRngFaults, IntoAnUnwritableProfile) {
  SweepSet("one plug-in, unwritable profile",
           kLookup + kDirectories + Names{"fclose r", "fopen r", "fopen w"},
           {.plugins = kOne, .profile = kProfile, .isUnwritable = true}, kStart);
}

TEST(SetDefaultRngFaults, AfterAFullStop) {
  SweepSet("stopped, existing profile", kLookup + kDirectories + kRewrite, {.profile = "[A]\n"},
           kStartAndStop);
}

// --- The object of GetDefaultSettings, before any start

TEST(GetDefaultSettingsFaults, InTheDataFile) {
  SweepSettings("data file", kLookup, {},
                [](IRngSettings& settings) { return TextOf(settings.GetDsdrFilePath()); });
}

TEST(GetDefaultSettingsFaults, InReading) {
  SweepSettings("reading", kLookup + kRead, {.profile = kProfile}, [](IRngSettings& settings) {
    const std::string type = TextOf(settings.GetType());
    return type + " " + TextOf(settings.GetHardwareId());
  });
}

TEST(GetDefaultSettingsFaults, InStoringADeviceWithoutAFolder) {
  SweepSettings("device without a folder", kLookup + Names{"fopen r", "fopen w"}, {},
                [](IRngSettings& settings) {
                  return std::string(settings.SetHardwareId("id-5") ? "stored" : "refused");
                });
}
