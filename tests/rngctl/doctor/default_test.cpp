// Why the configured default cannot be used.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>
#include <ostream>

using testing::HasSubstr;
using testing::Not;

namespace {

struct Default {
  const char* name;
  const char* type;
  const char* device;
  const char* problem;
  const char* fix;  // a part of it
};

void PrintTo(const Default& instance, std::ostream* out) { *out << instance.name; }

class DoctorDefault : public Doctor, public testing::WithParamInterface<Default> {};

constexpr char kCorrect[] =
    "Correct the line in the settings file, or store the default with \"rngctl default set\".";

std::string Quoted(const std::string& text) {
  return text.starts_with('"') ? text : '"' + text + '"';
}

void Configure(const std::string& type, const std::string& device) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=" + type +
                                         "\nRandomNumberGeneratorHardwareID=" + device + "\n");
}

}  // namespace

TEST_P(DoctorDefault, TellsWhyItCannotBeUsed) {
  const Default& expected = GetParam();
  InstallPlugin("dsdr", "has_devices");
  InstallPlugin("Rutoken", "unavailable");
  Configure(expected.type, expected.device);
  const json found = Examine("").at("default");
  EXPECT_EQ(expected.type, found.at("kind"));
  EXPECT_EQ(expected.problem, found.at("problem"));
  EXPECT_EQ(expected.fix, Text(found.at("fix")));
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  const std::string problem = expected.problem;
  EXPECT_THAT(result.errors,
              HasSubstr("The default " + Quoted(expected.type) + " cannot be used: " + problem +
                        (problem.ends_with('?') ? "" : ".")));
  EXPECT_THAT(result.errors, Not(HasSubstr("?.")));
  EXPECT_THAT(result.output, HasSubstr(std::string(", unusable: ") + expected.problem));
  EXPECT_EQ(0, Run("doctor dsdr").status);  // which is about that kind alone
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoctorDefault,
    testing::Values(
        Default{"AnotherCase", "Dsdr", "", "there is no kind \"Dsdr\"; did you mean \"dsdr\"?",
                "Store the right one with \"rngctl default set dsdr\"."},
        Default{"AMisspeltKind", "unixdef", "",
                "there is no kind \"unixdef\"; did you mean \"unixdev\"?",
                "Store the right one with \"rngctl default set unixdev\"."},
        Default{"AnUnknownKind", "thermal", "", "there is no kind \"thermal\"",
                "Store another default with \"rngctl default set KIND\"."},
        Default{"Quotes", "'dsdr'", "",
                "the kind \"'dsdr'\" has quotes, which are part of the value", kCorrect},
        Default{"DoubleQuotes", "\"dsdr\"", "",
                "the kind \"dsdr\" has quotes, which are part of the value", kCorrect},
        Default{"TheNameOfAFile", "biox11", "",
                "there is no kind \"biox11\"; did you mean \"unixx11\"?",
                "Store the right one with \"rngctl default set unixx11\"."},
        Default{"AComment", "dsdr ; ours", "",
                "the kind \"dsdr ; ours\" has a comment, which is part of the value", kCorrect},
        Default{"ACommentAfterAHash", "dsdr # ours", "",
                "the kind \"dsdr # ours\" has a comment, which is part of the value", kCorrect},
        Default{"EighteenBytes", "123456789012345678", "",
                "the kind \"123456789012345678\" is longer than 17 bytes", kCorrect},
        Default{"AKindThatIsNotInstalled", "sobol", "",
                "its plug-in is not usable: not installed: there is no librngsobol.so",
                "Follow the advice for sobol, or store another default with \"rngctl default set "
                "KIND\"."},
        Default{"AKindThatIsNotAvailable", "Rutoken", "",
                "its plug-in is not usable: not available",
                "Follow the advice for Rutoken, or store another default with \"rngctl default set "
                "KIND\"."},
        Default{
            "ARefusedDevice", "dsdr", "C3", "the generator refuses the device \"C3\"",
            "Connect that device, store another device with \"rngctl default set dsdr DEVICE\", "
            "or accept any device with \"rngctl default set dsdr\"."},
        Default{"ADeviceInQuotes", "dsdr", "'A1'",
                "the device \"'A1'\" has quotes, which are part of the value", kCorrect},
        Default{"ADeviceOfEighteenBytes", "dsdr", "123456789012345678",
                "the device \"123456789012345678\" is longer than 17 bytes", kCorrect}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Doctor, ADefaultThatCanBeUsedHasNoProblem) {
  InstallPlugin("dsdr", "has_devices");
  EXPECT_EQ(json(), Examine("").at("default"));
  for (const char* device : {"B2", ""}) {
    Configure("dsdr", device);
    const json found = Examine("").at("default");
    EXPECT_EQ(true, found.at("found"));
    EXPECT_EQ(json(), found.at("problem"));
    EXPECT_EQ(json(), found.at("fix"));
    EXPECT_EQ(0, Run("doctor").status);
  }
}

TEST_F(Doctor, ADefaultMayBeANameThatIsNoKind) {
  InstallPlugin("dsdr", "slot_table");
  Configure("slots", "");
  EXPECT_EQ(json(), Examine("").at("default").at("problem"));
}

TEST_F(Doctor, AStartThatFailsLeavesNoDefault) {
  InstallPlugin("dsdr", "has_devices");
  InstallPlugin("accord", "exiting");
  Configure("dsdr", "");
  EXPECT_THAT(Text(Examine("").at("default").at("problem")),
              HasSubstr("a start with all plug-ins exited with status 7"));
}

TEST_F(Doctor, KnowsOfTheDefaultEvenWhereItExaminesAnotherKind) {
  InstallPlugin("dsdr", "has_devices");
  Configure("sobol", "");
  const json found = Examine("dsdr").at("default");
  EXPECT_EQ(false, found.at("found"));
  EXPECT_EQ("its plug-in is not loaded", found.at("problem"));
  EXPECT_EQ("Run \"rngctl doctor sobol\" to find out why.", found.at("fix"));
}

// The default is then not the fault, so only the start is named.
TEST_F(Doctor, AStartThatFailsIsToldOnceWhateverTheDefault) {
  InstallPlugin("dsdr", "has_devices");
  InstallPlugin("accord", "exiting");
  Configure("dsdr", "");
  EXPECT_EQ(
      "rngctl: 1 installed plug-in has a problem. A start with all plug-ins exited with status 7 "
      "while loading librngaccord.so.\n",
      Run("doctor").errors);
}

TEST_F(Doctor, ShowsTheDeviceOfTheDefault) {
  InstallPlugin("dsdr", "has_devices");
  Configure("dsdr", "B2");
  EXPECT_EQ("B2", Examine("dsdr").at("default").at("hardware_id"));
  EXPECT_THAT(Run("doctor dsdr").output, HasSubstr("\nDefault          dsdr, device B2, usable\n"));
  InstallPlugin("sobol", "hanging");  // before the default is looked for
  EXPECT_THAT(Run("doctor dsdr --timeout 1").output,
              HasSubstr("\nDefault          dsdr, device B2, not examined\n"));
}

TEST_F(Doctor, NamesTheDevicesInsteadOfARefusedOne) {
  InstallPlugin("dsdr", "reports_devices");
  Configure("dsdr", "C3");
  EXPECT_EQ(
      "The devices are \"R1\". Connect the configured one, or store one of these with \"rngctl "
      "default set dsdr DEVICE\".",
      Examine("dsdr").at("default").at("fix"));
}
