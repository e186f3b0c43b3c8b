#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>
#include <ostream>

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

struct Case {
  const char* name;
  const char* kind;
  const char* variant;
  const char* verdict;
  bool isKept;
  const char* summary;
  const char* fix;  // "FILE" stands for the plug-in's
};

std::string WithFile(std::string text, const std::string& file) {
  const std::size_t place = text.find("FILE");
  return place == std::string::npos ? text : text.replace(place, 4, file);
}

void PrintTo(const Case& instance, std::ostream* out) { *out << instance.name; }

class DoctorVerdict : public Doctor, public testing::WithParamInterface<Case> {};

}  // namespace

TEST_P(DoctorVerdict, NamesTheFaultOfThePlugin) {
  const Case& expected = GetParam();
  InstallPlugin(expected.kind, expected.variant);
  const bool mustWait = expected.verdict == std::string("no-answer");
  const json row = ExamineKind(expected.kind, "", mustWait ? 1 : 5);
  EXPECT_EQ(expected.verdict, row.at("verdict"));
  EXPECT_EQ(expected.isKept, row.at("kept"));
  EXPECT_EQ(expected.summary, row.at("summary"));
  EXPECT_EQ(WithFile(expected.fix, Text(row.at("file"))), Text(row.at("fix")));
  EXPECT_EQ(TreePath("lib/" + LibraryFileOf(expected.kind)), row.at("file"));
  EXPECT_THAT(row.at("warnings"),
              Each(HasSubstr("RNG_BREAKING_DONE")));  // how some fakes fail once
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoctorVerdict,
    testing::Values(
        Case{"Stub", "dsdr", "stub", "loaded", true, "loaded as \"dsdr\"", ""},
        Case{"NoFactory", "dsdr", "no_factory", "no-factory", false,
             "no factory: the file does not export GetDsdrRng",
             "Replace the file with the plug-in for this kind. Its author can check it with "
             "\"rngctl check FILE\"."},
        Case{"NullFactory", "JacartaGost", "null_factory", "factory-gave-nothing", false,
             "its factory returned no generator",
             "Connect the device, and make sure that its driver is running, that its licence is "
             "valid, and that this user may use it."},
        Case{"Unavailable", "Rutoken", "unavailable", "not-available", false, "not available",
             "Connect the device, and make sure that its driver is running, that its licence is "
             "valid, and that this user may use it."},
        Case{"NoName", "EsmartGost", "nameless", "nameless", true,
             "loaded, but without a usable name: it reports none",
             "Report this to the vendor: programs find a generator by its name."},
        Case{"NegativeName", "sobol", "nameless", "nameless", true,
             "loaded, but without a usable name: it reports a size of -5, which makes every lookup "
             "that reaches it fail",
             "Report this to the vendor: programs find a generator by its name."},
        Case{"UnsteadyName", "accord", "nameless", "nameless", true,
             "loaded, but without a usable name: it reports a size of 5, then of 6",
             "Report this to the vendor: programs find a generator by its name."},
        Case{"EmptyName", "grandmaster", "nameless", "nameless", true,
             "loaded, but without a usable name: it reports an empty one",
             "Report this to the vendor: programs find a generator by its name."},
        Case{"WrongName", "dsdr", "slot_table", "wrong-name", true,
             "loaded, but its name is \"slots\"",
             "Ask for it by that name, or replace the file with the plug-in for this kind. Its "
             "author can check it with \"rngctl check FILE\"."},
        Case{"NameOfAnotherKind", "dsdr", "names_another_kind", "wrong-name", true,
             "loaded, but its name is \"sobol\"",
             "Remove the file, whose name is that of another kind, and get the plug-in for "
             "\"dsdr\" from its vendor. Its author can check it with \"rngctl check FILE\"."},
        Case{"PluginOfAnotherKind", "dsdr", "is_another_kind", "wrong-name", true,
             "loaded, but its name is \"sobol\"",
             "This is the plug-in for the kind \"sobol\": install it as librngsobol.so, and get "
             "the plug-in for \"dsdr\" from its vendor."},
        Case{"MissingDependency", "biokbd", "missing_dependency", "cannot-be-opened", false,
             "cannot be opened: \"libabsent_device.so\" is missing: libabsent_device.so: cannot "
             "open shared object file: No such file or directory",
             "Install the plug-in's dependency \"libabsent_device.so\" where the loader finds it."},
        Case{"ThrowingFactory", "dsdr", "throwing_start", "threw", false,
             "threw an exception in its factory GetDsdrRng: no driver",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"ThrowingRelease", "dsdr", "throwing_release", "threw", true,
             "threw an exception while being released",
             "Report this to the vendor: the library lists the generator, and programs fail the "
             "same way when they stop the library."},
        Case{"ExitingInSetSettings", "dsdr", "disturbing/Settings_Exit", "ended-the-process", false,
             "exited with status 0, or closed descriptors that are not its own, while receiving "
             "the settings",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"HangingInItsName", "dsdr", "disturbing/Name_Hang", "no-answer", true,
             "did not answer within 1 s when asked for its name",
             "Report this to the vendor: the library lists the generator, and programs fail the "
             "same way when they look up a generator."},
        Case{"CrashingInItsDestructors", "dsdr", "disturbing/Closing_Crash", "crashed", true,
             "crashed with signal 6 (Aborted) while being closed",
             "Report this to the vendor: the library lists the generator, and programs fail the "
             "same way when they stop the library."},
        // The library also releases a generator that it does not keep.
        Case{"UnavailableAndCrashingInItsRelease", "dsdr", "disturbing/Unavailable_Release_Crash",
             "crashed", false, "crashed with signal 6 (Aborted) while being released",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"CallingShutDown", "dsdr", "breaking/calls_shut_down", "calls-back", true,
             "calls ShutDown, which plug-ins must not do, while being released",
             "Report this to the vendor: the library lists the generator, and programs fail the "
             "same way when they stop the library."},
        Case{"CallingInitialize", "dsdr", "breaking/calls_initialize", "calls-back", false,
             "calls Initialize, which plug-ins must not do, when asked whether it is available",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"CallingInitializeInItsName", "dsdr", "initializes_in_name", "calls-back", true,
             "calls Initialize, which plug-ins must not do, when asked for its name",
             "Report this to the vendor: the library lists the generator, and programs fail the "
             "same way when they look up a generator."},
        Case{"ClosingBadly", "dsdr", "breaking/exit_handler_stays", "crashed", true,
             "crashed with signal 11 (Segmentation fault) while the process exited",
             "Report this to the vendor: every program that loads the plug-in fails the same way "
             "on exit."},
        Case{"Crashing", "grandmaster", "crashing", "crashed", false,
             "crashed with signal 6 (Aborted) in its factory GetGrandmasterRng",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"Exiting", "accord", "exiting", "ended-the-process", false,
             "exited with status 7 in its factory GetAccordRng",
             "Remove the file or get a fixed version from the vendor; until then every program "
             "that starts the library fails the same way."},
        Case{"Hanging", "sobol", "hanging", "no-answer", false,
             "did not answer within 1 s when asked whether it is available",
             "Make sure that the device is connected and ready, or allow more time with --timeout; "
             "every program that starts the library waits just as long."}),
    [](const auto& instance) { return std::string(instance.param.name); });

// These plug-ins come with the library, so there is no vendor to ask.
TEST_F(Doctor, SaysWhereToGetThePluginsOfTheProject) {
  const std::pair<std::string, std::string> kinds[] = {
      {"unixdev", "unixdev"}, {"biokbd", "biokb"}, {"unixx11", "biox11"}, {"bioqt", "bioqt"}};
  for (const auto& [kind, plugin] : kinds) {
    EXPECT_EQ("To use this generator, install the package rng-plugin-" + plugin +
                  ". If you build from source, install this plug-in, too: librng" + plugin +
                  ".so belongs in " + TreePath("lib") + ".",
              ExamineKind(kind).at("fix"));
  }
}

TEST_F(Doctor, SeesThatNothingIsInstalled) {
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("not-installed", row.at("verdict"));
  EXPECT_EQ("not installed: there is no librngdsdr.so", row.at("summary"));
  EXPECT_THAT(Text(row.at("fix")),
              EndsWith("install the vendor's plug-in in " + TreePath("lib") + "."));
  EXPECT_EQ(json(), row.at("file"));
}

TEST_F(Doctor, SeesThatAFileIsThePluginOfAnotherKind) {
  std::filesystem::copy(FakePlugin("sobol", "stub"), TreePath("lib/librngdsdr.so"));
  EXPECT_THAT(Text(ExamineKind("dsdr").at("fix")),
              HasSubstr("plug-in for the kind \"sobol\": install it as librngsobol.so."));
}

// --- No plug-in affects the row of another

TEST_F(Doctor, APluginThatSpoilsItsRowSpoilsNoOther) {
  InstallX11("whole");
  InstallOneOfEach();
  std::vector<std::string> kinds;
  std::vector<std::string> verdicts;
  const json report = Examine("", "", 2);
  for (const json& row : report.at("generators")) {
    kinds.push_back(row.at("kind"));
    verdicts.push_back(row.at("verdict"));
  }
  EXPECT_EQ(KindNames(), kinds);
  EXPECT_THAT(verdicts,
              ElementsAre("loaded", "cannot-be-opened", "threw", "ended-the-process", "no-answer",
                          "factory-gave-nothing", "not-available", "nameless", "cannot-be-opened",
                          "loaded", "crashed", "not-installed"));
}

TEST_F(Doctor, SendsTheAuthorOfAMisplacedPluginToTheCheck) {
  const std::string file = TreePath("lib/librngdsdr.so");
  std::filesystem::copy(FakePlugin("sobol", "stub"), file);
  EXPECT_EQ(
      "This is the plug-in for the kind \"sobol\": install it as librngsobol.so. Its author can "
      "check it with \"rngctl check " +
          file + "\".",
      ExamineKind("dsdr").at("fix"));
}
