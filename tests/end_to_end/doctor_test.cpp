#include "tests/end_to_end/installed_tool.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/tree.h"
#include "tests/support/x_server.h"

#include <cstddef>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

constexpr char kSettingsFile[] = "etc/rng.ini";

class Doctor : public InstalledTool {
 protected:
  // The plug-in that comes with the library is away, unless a case wants it.
  void SetUp() override {
    InstalledTool::SetUp();
    fs::rename(UnixDev(), UnixDev() + ".away");
  }

  static void InstallUnixDev() { fs::rename(UnixDev() + ".away", UnixDev()); }

  // In an environment, such as "DISPLAY=:7", with so many seconds for each plug-in.
  static json Examine(const std::string& arguments, const std::string& environment = "",
                      int timeout = 5) {
    const Result result = RunShell(environment + " " + Rngctl() + " doctor --json --timeout " +
                                   std::to_string(timeout) + " " + arguments);
    return json::parse(result.output, nullptr, false);
  }

  static json ExamineKind(const std::string& kind, const std::string& environment = "",
                          int timeout = 5) {
    return Examine(kind, environment, timeout).at("generators").at(0);
  }

 private:
  static std::string UnixDev() { return TreePath("lib/librngunixdev.so"); }
};

json RowOf(const json& report, const std::string& kind) {
  for (const json& row : report.at("generators")) {
    if (row.at("kind") == kind) return row;
  }
  ADD_FAILURE() << "no row of " << kind;
  return {};
}

std::string Text(const json& value) { return value.is_string() ? value.get<std::string>() : ""; }

}  // namespace

// --- Each verdict

namespace {

struct Case {
  const char* name;
  const char* kind;
  const char* variant;
  const char* verdict;
  bool isKept;
  const char* summary;
  const char* mend;  // a part of it
};

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
  EXPECT_THAT(Text(row.at("mend")), HasSubstr(expected.mend));
  EXPECT_EQ(TreePath("lib/" + LibraryFileOf(expected.kind)), row.at("file"));
  EXPECT_THAT(row.at("warnings"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoctorVerdict,
    testing::Values(
        Case{"Stub", "dsdr", "stub", "loaded", true, "loaded as \"dsdr\"", ""},
        Case{"NoFactory", "dsdr", "no_factory", "no-factory", false,
             "no factory: the file has no function GetDsdrRng", "made for this kind"},
        Case{"NullFactory", "JacartaGost", "null_factory", "factory-gave-nothing", false,
             "factory gave nothing", "device"},
        Case{"Unavailable", "Rutoken", "unavailable", "not-available", false, "not available",
             "Connect the device"},
        Case{"NoName", "EsmartGost", "nameless", "nameless", true,
             "loaded, but without a name: it reports none", "Ask its maker"},
        Case{"NegativeName", "sobol", "nameless", "nameless", true,
             "loaded, but without a name: it reports a size of -5, and every search for a name "
             "fails "
             "that comes to it",
             "Ask its maker"},
        Case{"UnsteadyName", "accord", "nameless", "nameless", true,
             "loaded, but without a name: it reports a size of 5, then of 6", "Ask its maker"},
        Case{"EmptyName", "grandmaster", "nameless", "nameless", true,
             "loaded, but without a name: it reports an empty one", "Ask its maker"},
        Case{"WrongName", "dsdr", "slot_table", "wrong-name", true,
             "loaded, but its name is \"slots\"", "Ask for it by that name"},
        Case{"MissingDependency", "biokbd", "missing_dependency", "cannot-be-opened", false,
             "cannot be opened: \"libabsent_device.so\" is missing: libabsent_device.so: cannot "
             "open shared object file: No such file or directory",
             "Install \"libabsent_device.so\""},
        Case{"ThrowingFactory", "dsdr", "throwing_start", "threw", false,
             "threw an exception in its factory GetDsdrRng: no driver", "Remove the file"},
        Case{"ThrowingRelease", "dsdr", "throwing_release", "threw", true,
             "threw an exception while it was released: nothing that says why", "Ask its maker"},
        Case{"CallingShutDown", "dsdr", "breaking/calls_shut_down", "calls-back", true,
             "calls ShutDown, as no plug-in may, while it was released", "Ask its maker"},
        Case{"CallingInitialize", "dsdr", "breaking/calls_initialize", "calls-back", false,
             "calls Initialize, as no plug-in may, when asked whether it is available",
             "Remove the file"},
        Case{"ClosingBadly", "dsdr", "breaking/exit_handler_stays", "crashed", true,
             "crashed with signal 11 (Segmentation fault) while the process ended",
             "at its own end"},
        Case{"Crashing", "grandmaster", "crashing", "crashed", false,
             "crashed with signal 6 (Aborted) in its factory GetGrandmasterRng", "Remove the file"},
        Case{"Exiting", "accord", "exiting", "ended-the-process", false,
             "ended the process with status 7 in its factory GetAccordRng", "Remove the file"},
        Case{"Hanging", "sobol", "hanging", "no-answer", false,
             "no answer in 1 s when asked whether it is available", "--timeout"}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Doctor, SeesThatNothingIsInstalled) {
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("not-installed", row.at("verdict"));
  EXPECT_EQ("not installed", row.at("summary"));
  EXPECT_THAT(Text(row.at("mend")), EndsWith("into " + TreePath("lib") + "."));
  EXPECT_EQ(json(), row.at("file"));
}

TEST_F(Doctor, QuotesTheLoaderOnAFileThatIsNoLibrary) {
  const std::string file = TreePath("lib/librngdsdr.so");
  WriteFile(file, std::string(1000, 'x'));
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("cannot-be-opened", row.at("verdict"));
  EXPECT_EQ("cannot be opened: " + file + ": invalid ELF header", row.at("summary"));
  EXPECT_EQ(file, row.at("file"));
}

namespace {

const std::string kNoSuchFile =
    "librngdsdr.so: cannot open shared object file: No such file or directory";

// An ELF file, of which the loader reads no more than its head.
void WriteForeignLibrary(const std::string& file) {
  fs::copy_file(FAKES_DIR "/stub/librngdsdr.so", file);
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(offsetof(Elf64_Ehdr, e_machine));
  stream.put(static_cast<char>(EM_AARCH64));
}

}  // namespace

TEST_F(Doctor, PassesOverAFileForAnotherMachineAsTheLoaderDoes) {
  const std::string foreign = TreePath("lib/librngdsdr.so");
  WriteForeignLibrary(foreign);
  const json alone = ExamineKind("dsdr");
  EXPECT_EQ("cannot be opened: it is made for another machine: " + kNoSuchFile,
            alone.at("summary"));
  EXPECT_EQ(foreign, alone.at("file"));
  EXPECT_THAT(Text(alone.at("mend")), HasSubstr("See that " + foreign));

  fs::create_directory(TreePath("other"));
  fs::copy(FAKES_DIR "/stub/librngdsdr.so", TreePath("other"));
  const json second = ExamineKind("dsdr", "LD_LIBRARY_PATH=" + TreePath("other"));
  EXPECT_EQ("loaded", second.at("verdict"));
  EXPECT_EQ(TreePath("other/librngdsdr.so"), second.at("file"));
}

TEST_F(Doctor, FindsALinkThatLeadsNowhere) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::create_symlink(TreePath("lib/gone"), file);
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("cannot be opened: a link to nothing: " + kNoSuchFile, row.at("summary"));
  EXPECT_EQ(file, row.at("file"));
  EXPECT_THAT(Text(row.at("mend")), HasSubstr(file));
}

TEST_F(Doctor, APipeInAPluginsPlaceIsWaitedForNoLongerThanAPlugin) {
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngdsdr.so").c_str(), 0600));
  EXPECT_EQ("no answer in 1 s while it was opened", ExamineKind("dsdr", "", 1).at("summary"));
}

TEST_F(Doctor, AFileThatIsCutOffMayBeIncomplete) {
  const std::string file = TreePath("lib/librngdsdr.so");
  fs::copy(FAKES_DIR "/stub/librngdsdr.so", file);
  fs::resize_file(file, 4096);
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("crashed with signal 7 (Bus error) while it was opened", row.at("summary"));
  EXPECT_THAT(Text(row.at("mend")), StartsWith("Install it again"));

  // Within its head: the loader passes over no such file.
  fs::resize_file(file, 10);
  fs::create_directory(TreePath("other"));
  fs::copy(FAKES_DIR "/stub/librngdsdr.so", TreePath("other"));
  EXPECT_EQ("cannot be opened: " + file + ": file too short",
            ExamineKind("dsdr", "LD_LIBRARY_PATH=" + TreePath("other")).at("summary"));
}

// --- Usable, and yet

TEST_F(Doctor, WarnsOfAFunctionThatIsMissing) {
  InstallPlugin("unixdev", "unresolved_function");
  const json row = ExamineKind("unixdev");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It needs the function \"GetSobolRng\","));
}

TEST_F(Doctor, WarnsOfAFunctionThatOnlyThisProgramHas) {
  InstallPlugin("dsdr", "breaking/borrows_a_function");
  const json row = ExamineKind("dsdr");
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It needs the function \"elf_version\","));
}

TEST_F(Doctor, WarnsOfAPluginWithoutCapabilities) {
  InstallPlugin("sobol", "flagless");
  const json row = ExamineKind("sobol");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It reports no capability"));
}

TEST_F(Doctor, WarnsOfAPluginThatIsNotGoneWhenItIsClosed) {
  InstallPlugin("biocore", "sticky");
  const json row = ExamineKind("biocore");
  EXPECT_EQ("loaded", row.at("verdict"));
  ASSERT_EQ(1U, row.at("warnings").size());
  EXPECT_THAT(Text(row.at("warnings")[0]), StartsWith("It stays in the process"));
}

// --- The display

namespace {

struct Display {
  const char* name;
  const char* library;
  const char* environment;
  std::string reason;  // a part of it
};

void PrintTo(const Display& instance, std::ostream* out) { *out << instance.name; }

class DoctorDisplay : public Doctor, public testing::WithParamInterface<Display> {};

}  // namespace

TEST_P(DoctorDisplay, TellsWhyThereIsNone) {
  const Display& expected = GetParam();
  InstallX11(expected.library);
  InstallPlugins({"bioqt", "biokbd"});
  const json report = Examine("", expected.environment);
  const std::string reason = Text(report.at("display").at("reason"));
  EXPECT_FALSE(report.at("display").at("found"));
  EXPECT_FALSE(report.at("display").at("ends_processes"));
  EXPECT_THAT(reason, HasSubstr(expected.reason));
  const json row = RowOf(report, "bioqt");
  EXPECT_EQ("no-display", row.at("verdict"));
  EXPECT_EQ("skipped: no X display, " + reason, row.at("summary"));
  EXPECT_EQ(report.at("display").at("mend"), row.at("mend"));
  EXPECT_EQ(TreePath("lib/librngbioqt.so"), row.at("file"));
  EXPECT_EQ("not-installed", RowOf(report, "unixx11").at("verdict"));
  EXPECT_EQ("loaded", RowOf(report, "biokbd").at("verdict"));
}

INSTANTIATE_TEST_SUITE_P(
    With, DoctorDisplay,
    testing::Values(
        Display{"NoOpen", "no_open", "DISPLAY=:7", "/lib/libX11.so.6 lacks XOpenDisplay"},
        Display{"NoClose", "no_close", "DISPLAY=:7", "/lib/libX11.so.6 lacks XCloseDisplay"},
        Display{"NoSetting", "refusing", "", "DISPLAY is not set"},
        Display{"EmptySetting", "refusing", "DISPLAY=", "DISPLAY is not set"},
        Display{"NoServer", "refusing", "DISPLAY=:7", "the X server of DISPLAY=:7 cannot be"},
        Display{"NoLibrary", "absent", "DISPLAY=:7", "libX11.so.6 cannot be opened: "}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Doctor, TriesWhatNeedsADisplayWhereThereIsOne) {
  InstallX11("whole");
  InstallPlugins({"bioqt", "unixx11"});
  const json report = Examine("");
  EXPECT_TRUE(report.at("display").at("found"));
  EXPECT_EQ("loaded", RowOf(report, "bioqt").at("verdict"));
  EXPECT_EQ("loaded", RowOf(report, "unixx11").at("verdict"));
}

TEST_F(Doctor, SeesARealServerComeAndGo) {
  fs::remove(TreePath("lib/libX11.so.6"));
  InstallPlugin("bioqt");
  XServer server;
  const std::string environment = "DISPLAY=" + server.display;
  EXPECT_EQ("loaded", ExamineKind("bioqt", environment).at("verdict"));
  server.Stop();
  EXPECT_EQ("skipped: no X display, the X server of " + environment + " cannot be reached",
            ExamineKind("bioqt", environment).at("summary"));
}

TEST_F(Doctor, SaysWhenLookingForTheDisplayEndsEveryProgram) {
  InstallX11("crashing");
  InstallPlugin("dsdr", "stub");
  const Result result = Run("doctor --json");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("The library cannot be started"));
  const json report = json::parse(result.output);
  EXPECT_TRUE(report.at("display").at("ends_processes"));
  EXPECT_THAT(Text(report.at("display").at("reason")), HasSubstr("crashed with signal 6"));
  EXPECT_EQ("loaded", RowOf(report, "dsdr").at("verdict"));
}

TEST_F(Doctor, FindsNoDefaultBehindAPluginThatEndsEveryStart) {
  InstallUnixDev();
  RunShell(Rngctl() + " default set unixdev");
  EXPECT_EQ(true, Examine("").at("default").at("found"));
  InstallPlugin("dsdr", "throwing_start");
  EXPECT_EQ(false, Examine("").at("default").at("found"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("grandmaster", "crashing");
  EXPECT_EQ(false, Examine("").at("default").at("found"));
}

TEST_F(Doctor, APipeInThePlaceOfTheSettingsIsNotBlamedOnTheService) {
  fs::create_directory(TreePath("etc"));
  ASSERT_EQ(0, ::mkfifo(TreePath(kSettingsFile).c_str(), 0600));
  const json settings = Examine("dsdr", "", 1).at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), settings.at("file"));
  EXPECT_EQ("reading it: no answer in 1 s", settings.at("problem"));
}

// --- The start with all plug-ins

TEST_F(Doctor, StartsTheLibraryWhereNoPluginIsKnownToDisturbIt) {
  InstallUnixDev();
  EXPECT_EQ(json({{"tried", true}, {"problem", json()}}), Examine("").at("start"));
  EXPECT_EQ(json({{"tried", false}, {"problem", "not tried"}}), Examine("unixdev").at("start"));
  InstallPlugin("grandmaster", "crashing");
  InstallPlugin("accord", "exiting");
  EXPECT_EQ(json({{"tried", false}, {"problem", "not tried, because of accord, grandmaster"}}),
            Examine("").at("start"));
}

TEST_F(Doctor, SaysWhatASearchForTheDefaultComesTo) {
  InstallUnixDev();
  InstallPlugin("sobol", "nameless");  // with a negative size
  ASSERT_EQ(0, RunShell(Rngctl() + " default set dsdr || true").status);
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  const json report = Examine("");
  EXPECT_EQ(false, report.at("default").at("found"));
  EXPECT_EQ("an exception in the search for the default", report.at("start").at("problem"));
}

TEST_F(Doctor, DoesNotKnowOfADefaultThatIsNotLookedFor) {
  InstallUnixDev();
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=unixdev\n");
  InstallPlugin("dsdr", "throwing_release");
  EXPECT_EQ(json(), Examine("").at("default").at("found"));
  fs::remove(TreePath("lib/librngdsdr.so"));
  InstallPlugin("sobol", "hanging");  // or slow: the limit is the doctor's
  EXPECT_EQ(json(), Examine("", "", 1).at("default").at("found"));
}

TEST_F(Doctor, TheStartIsRightWherePluginsAnswerOtherwiseBesideOthers) {
  InstallX11("whole");
  InstallPlugin("bioqt");
  InstallPlugin("dsdr", "sociable");
  InstallPlugin("sobol", "sociable");
  const json report = Examine("");
  const json dsdr = RowOf(report, "dsdr");
  EXPECT_EQ("contradicted", dsdr.at("verdict"));
  EXPECT_EQ(true, dsdr.at("kept"));
  EXPECT_EQ("not available, but a start with all plug-ins keeps " + TreePath("lib/librngdsdr.so"),
            dsdr.at("summary"));
  const json sobol = RowOf(report, "sobol");
  EXPECT_EQ("contradicted", sobol.at("verdict"));
  EXPECT_EQ(false, sobol.at("kept"));
  EXPECT_EQ("loaded as \"sobol\", but a start with all plug-ins does not keep it",
            sobol.at("summary"));
  EXPECT_EQ("loaded", RowOf(report, "bioqt").at("verdict"));
  EXPECT_THAT(Run("doctor").errors, HasSubstr("2 of the installed plug-ins are not in order"));
}

TEST_F(Doctor, WarnsOfAFileForThisProcessorThatComesBeforeTheOther) {
  InstallPlugin("dsdr", "stub");
  const std::string folder = TreePath("lib/glibc-hwcaps/x86-64-v2");
  fs::create_directories(folder);
  fs::copy(TreePath("lib/librngdsdr.so"), folder);
  EXPECT_EQ(json({"A start with all plug-ins takes " + folder + "/librngdsdr.so in its place."}),
            RowOf(Examine(""), "dsdr").at("warnings"));
}

TEST_F(Doctor, AStartThatDoesNotGoWellIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("sobol", "crowded");
  InstallPlugin("accord", "crowded");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: A start with all plug-ins: crashed with signal 6 (Aborted) in the start.\n",
            result.errors);
  EXPECT_THAT(result.output, HasSubstr("\nStart, stop    crashed with signal 6 (Aborted) in the "
                                       "start\n"));
}

// The library's run path finds plug-ins, not what they need.
TEST_F(Doctor, WhatAPluginNeedsIsNotFoundBesideIt) {
  InstallPlugin("biokbd", "missing_dependency");
  InstallPlugin("unixdev");
  fs::copy(FAKES_DIR "/missing_dependency/libabsent_device.so", TreePath("lib"));
  EXPECT_EQ("cannot-be-opened", ExamineKind("biokbd").at("verdict"));
  EXPECT_THAT(Text(ExamineKind("biokbd").at("mend")), HasSubstr("a plug-in with a run path"));
  EXPECT_THAT(RunShell(Rngctl() + " list").output, Not(HasSubstr("biokbd")));
  const std::string environment = "LD_LIBRARY_PATH=" + TreePath("lib");
  EXPECT_NE("cannot-be-opened", ExamineKind("biokbd", environment).at("verdict"));
}

// --- A row of its own for each plug-in

namespace {

// Every verdict, but for those that exclude one of these.
void InstallOneOfEach() {
  InstallPlugin("bioqt");
  WriteFile(TreePath("lib/librngbiox11.so"), "not a library");
  InstallPlugin("dsdr", "throwing_start");
  InstallPlugin("accord", "exiting");
  InstallPlugin("sobol", "hanging");
  InstallPlugin("JacartaGost", "null_factory");
  InstallPlugin("Rutoken", "unavailable");
  InstallPlugin("EsmartGost", "nameless");
  InstallPlugin("biokbd", "missing_dependency");
  InstallPlugin("unixdev");
  InstallPlugin("grandmaster", "crashing");
}

}  // namespace

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
  EXPECT_THAT(kinds,
              ElementsAre("bioqt", "unixx11", "dsdr", "accord", "sobol", "JacartaGost", "Rutoken",
                          "EsmartGost", "biokbd", "unixdev", "grandmaster", "biocore"));
  EXPECT_THAT(verdicts,
              ElementsAre("loaded", "cannot-be-opened", "threw", "ended-the-process", "no-answer",
                          "factory-gave-nothing", "not-available", "nameless", "cannot-be-opened",
                          "loaded", "crashed", "not-installed"));
}

// --- The library's own opinion

namespace {

// The plug-ins of each folder of fakes, wherever it is below theirs.
std::map<fs::path, std::vector<fs::path>> FakePlugins() {
  std::map<fs::path, std::vector<fs::path>> folders;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(FAKES_DIR)) {
    if (entry.path().filename().string().starts_with("librng")) {
      folders[entry.path().parent_path()].push_back(entry.path());
    }
  }
  return folders;
}

// Which of the files a start of the library keeps open; none when it does not come back.
std::set<std::string> FilesKept(const std::vector<fs::path>& files) {
  const std::string report = TreePath("kept");
  fs::remove(report);
  const pid_t host = ::fork();
  if (host == 0) {
    ::alarm(2);
    AggregatorLibrary aggregator;
    try {
      aggregator.Initialize(aggregator.GetDefaultSettings());
    } catch (...) {
      ::_exit(1);
    }
    std::ofstream kept(report);
    for (const fs::path& file : files) {
      if (IsMapped(file.filename())) kept << file.filename().string() << '\n';
    }
    kept.close();
    ::_exit(0);
  }
  ::waitpid(host, nullptr, 0);
  std::set<std::string> names;
  std::ifstream kept(report);
  for (std::string name; std::getline(kept, name);) names.insert(name);
  return names;
}

std::set<std::string> FilesKept(const json& report) {
  std::set<std::string> names;
  const json& start = report.at("start");
  if (start.at("tried") && !start.at("problem").is_null()) return names;  // no row's fault
  for (const json& row : report.at("generators")) {
    if (row.at("kept")) names.insert(row.at("library_file"));
  }
  return names;
}

}  // namespace

TEST_F(Doctor, AgreesWithTheLibraryOnEachFakePlugin) {
  std::map<std::string, std::string> kinds;  // by library file
  const json none = Examine("");
  for (const json& row : none.at("generators")) kinds[row.at("library_file")] = row.at("kind");
  std::size_t kept = 0;
  const auto compare = [&](const fs::path& folder, const std::vector<fs::path>& files) {
    for (const fs::path& file : files)
      fs::copy_file(file, fs::path(TreePath("lib")) / file.filename());
    const std::set<std::string> keptByLibrary = FilesKept(files);
    const json report = Examine(files.size() == 1 ? kinds.at(files[0].filename()) : "", "", 2);
    EXPECT_EQ(keptByLibrary, FilesKept(report)) << folder << report.dump(2);
    kept += keptByLibrary.size();
    for (const fs::path& file : files) fs::remove(fs::path(TreePath("lib")) / file.filename());
  };
  const auto folders = FakePlugins();
  for (const auto& [folder, files] : folders) {
    InstallX11("whole");
    compare(folder, files);
    InstallX11("refusing");
    if (files.size() > 1) compare(folder, files);
  }
  EXPECT_LT(16U, folders.size());
  EXPECT_LT(50U, kept);
}

// --- The top part

TEST_F(Doctor, ShowsTheLibraryAndWhereItSearches) {
  const json library = Examine("dsdr", "LD_LIBRARY_PATH=/opt/one/:/opt/two").at("library");
  EXPECT_THAT(Text(library.at("file")), StartsWith(TreePath("lib/librngaggregator.so")));
  EXPECT_EQ("$ORIGIN/../lib", library.at("run_path"));
  EXPECT_EQ(json({TreePath("lib"), "/opt/one", "/opt/two"}), library.at("directories"));
  EXPECT_THAT(library.at("default_directories"), Not(IsEmpty()));
}

TEST_F(Doctor, TellsTheSystemsDirectoriesFromThoseOfTheEnvironment) {
  const json defaults = Examine("dsdr").at("library").at("default_directories");
  for (const char* odd :
       {"'/opt/one;/opt/two:'", "'$ORIGIN/x'", ":", "/lib:/usr/lib/", "//opt//"}) {
    const std::string environment = std::string("LD_LIBRARY_PATH=") + odd;
    EXPECT_EQ(defaults, Examine("dsdr", environment).at("library").at("default_directories"))
        << odd;
  }
}

TEST_F(Doctor, RefusesAFolderThatNoSearchPathCanName) {
  RunShell("mkdir " + TreePath("a:b") + "; cp -r " + TreePath("bin") + " " + TreePath("lib") + " " +
           TreePath("a:b"));
  const Result result = RunShell(TreePath("a:b/bin/rngctl") + " doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("a colon or a semicolon"));
}

TEST_F(Doctor, TheFileBesideTheLibraryComesFirst) {
  InstallPlugin("dsdr", "stub");
  fs::create_directory(TreePath("other"));
  fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
  const std::string environment = "LD_LIBRARY_PATH=" + TreePath("other");
  EXPECT_EQ(TreePath("other/librngdsdr.so"), ExamineKind("dsdr", environment).at("file"));
  InstallPlugin("dsdr", "no_factory");
  EXPECT_EQ(TreePath("lib/librngdsdr.so"), ExamineKind("dsdr", environment).at("file"));
  EXPECT_EQ("no-factory", ExamineKind("dsdr", environment).at("verdict"));
}

TEST_F(Doctor, ShowsTheSettingsFileOfTheService) {
  const json before = Examine("dsdr").at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), before.at("file"));
  EXPECT_EQ(TreePath("lib/libcrypt_known_path.so"), before.at("known_path_service"));
  EXPECT_FALSE(before.at("exists"));
  EXPECT_TRUE(before.at("writable"));
  EXPECT_FALSE(fs::exists(TreePath("etc")));
  ASSERT_EQ(0, Run("default set dsdr").status);
  const json after = Examine("dsdr").at("settings");
  EXPECT_TRUE(after.at("exists"));
  EXPECT_EQ(json(), after.at("reading_fault"));
  EXPECT_TRUE(after.at("writable"));
}

TEST_F(Doctor, SeesWhatIsInTheWayOfTheSettingsFile) {
  fs::create_directories(TreePath(kSettingsFile));
  const json folder = Examine("dsdr").at("settings");
  EXPECT_TRUE(folder.at("exists"));
  EXPECT_EQ("it is no regular file", folder.at("reading_fault"));
  EXPECT_FALSE(folder.at("writable"));
  fs::remove(TreePath(kSettingsFile));
  WriteFile(TreePath(kSettingsFile), "[Devices]\n");
  fs::create_directory(TreePath("etc/rng.ini.tmp"));
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
  fs::remove_all(TreePath("etc"));
  fs::create_symlink(TreePath("gone"), TreePath("etc"));
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
  fs::remove(TreePath("etc"));
  WriteFile(TreePath("etc"), "a file in the way");
  EXPECT_FALSE(Examine("dsdr").at("settings").at("writable"));
}

TEST_F(Doctor, ShowsTheFixedDirectoryWithoutAService) {
  InstallKnownPath("absent");
  const json settings = Examine("dsdr").at("settings");
  EXPECT_EQ(json(), settings.at("known_path_service"));
  EXPECT_EQ(RNG_SETTINGS_DIR "/rng.ini", settings.at("file"));
}

TEST_F(Doctor, SeesAServiceThatTheProcessAlreadyHas) {
  fs::rename(TreePath("lib/libcrypt_known_path.so"), TreePath("lib/another.so"));
  const json settings = Examine("dsdr", "LD_PRELOAD=" + TreePath("lib/another.so")).at("settings");
  EXPECT_EQ(TreePath(kSettingsFile), settings.at("file"));
  EXPECT_NE(json(), settings.at("known_path_service"));
}

TEST_F(Doctor, ExplainsAServiceThatDoesNotAnswer) {
  InstallKnownPath("no_function");
  const json silent = Examine("dsdr").at("settings");
  EXPECT_EQ(json(), silent.at("file"));
  EXPECT_EQ("the known-path service names no directory", silent.at("problem"));
  InstallKnownPath("crashing");
  const json crashing = Examine("dsdr").at("settings");
  EXPECT_EQ("the known-path service: crashed with signal 6 (Aborted)", crashing.at("problem"));
}

TEST_F(Doctor, SaysWhetherTheDefaultWouldBeFound) {
  InstallPlugin("dsdr", "slot_table");
  EXPECT_EQ(json(), Examine("").at("default"));
  ASSERT_EQ(0, Run("default set slots X1").status);
  EXPECT_EQ(json({{"kind", "slots"}, {"hardware_id", "X1"}, {"found", true}}),
            Examine("").at("default"));
  ASSERT_EQ(0, Run("default set dsdr").status);
  EXPECT_EQ(json({{"kind", "dsdr"}, {"hardware_id", json()}, {"found", false}}),
            Examine("").at("default"));
  EXPECT_EQ(json(), Examine("dsdr").at("default").at("found"));
}

TEST_F(Doctor, ADefaultThatIsTooLongIsNotFound) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=123456789012345678\n");
  EXPECT_EQ(false, Examine("").at("default").at("found"));
  EXPECT_THAT(
      Run("doctor").output,
      HasSubstr("\nDefault        123456789012345678, of no use: more than 17 characters\n"));
}

TEST_F(Doctor, SaysWhyNoDefaultIsConfigured) {
  WriteFile(TreePath(kSettingsFile), "[Device]\nRandomNumberGeneratorType=dsdr\n");
  EXPECT_THAT(Run("doctor").output,
              HasSubstr("\nDefault        none: the file gives no "
                        "RandomNumberGeneratorType in a section [Devices]\n"));
  fs::remove(TreePath(kSettingsFile));
  fs::create_directory(TreePath(kSettingsFile));
  EXPECT_THAT(Run("doctor").output, AllOf(HasSubstr("cannot be read (it is no regular file)"),
                                          HasSubstr("\nDefault        none: the settings file "
                                                    "cannot be read\n")));
}

TEST_F(Doctor, ShowsFilesThatLookLikePluginsAndAreOfNoKind) {
  fs::copy(FAKES_DIR "/stub/librngdsdr.so", TreePath("lib/librngDsdr.so"));
  const json report = Examine("");
  EXPECT_EQ(json({TreePath("lib/librngDsdr.so")}), report.at("strays"));
  EXPECT_EQ("not-installed", RowOf(report, "dsdr").at("verdict"));
}

// --- What is printed

TEST_F(Doctor, PrintsTextInColumns) {
  InstallUnixDev();
  InstallPlugin("accord", "stub");
  const Result result = Run("doctor");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
  const std::string lib = TreePath("lib");
  EXPECT_THAT(result.output, StartsWith("Library        " + lib + "/librngaggregator.so"));
  EXPECT_THAT(result.output, HasSubstr("\nRun path       $ORIGIN/../lib\nSearch order   " + lib));
  EXPECT_THAT(result.output,
              HasSubstr("\nSettings file  " + TreePath(kSettingsFile) +
                        ", does not exist, can be written\nKnown paths    " + lib +
                        "/libcrypt_known_path.so\nX display      none, DISPLAY is not set\n"
                        "Default        none configured\nStart, stop    in order\n\n"));
  const std::string blanks(lib.size() + sizeof "/librngunixdev.so", ' ');
  EXPECT_THAT(result.output, HasSubstr("\nKIND           FILE" + blanks.substr(3) +
                                       "VERDICT\n"
                                       "bioqt          -" +
                                       blanks + "not installed\n"));
  EXPECT_THAT(result.output,
              HasSubstr("\nunixdev        " + lib + "/librngunixdev.so  loaded as \"unixdev\"\n"));
  EXPECT_THAT(result.output,
              EndsWith("\n\nbioqt, unixx11, dsdr, sobol, JacartaGost, Rutoken, EsmartGost, "
                       "biokbd, grandmaster, biocore: Where such a generator is wanted, install "
                       "its maker's plug-in into " +
                       lib + ".\n"));
}

TEST_F(Doctor, PrintsNoControlCharacters) {
  WriteFile(TreePath(kSettingsFile), "[Devices]\nRandomNumberGeneratorType=a\033b\u009Bc\n");
  EXPECT_THAT(Run("doctor dsdr").output, HasSubstr("\nDefault        a?b?c, not examined\n"));
}

TEST_F(Doctor, CountsLettersNotBytes) {
  fs::create_directory(TreePath("f\u00FCnf"));
  fs::copy(FAKES_DIR "/stub/librngdsdr.so", TreePath("f\u00FCnf"));
  const std::string blanks(TreePath("f\u00FCnf/librngdsdr.so").size() - 1, ' ');
  EXPECT_THAT(
      RunShell("LD_LIBRARY_PATH=" + TreePath("f\u00FCnf") + " " + Rngctl() + " doctor").output,
      HasSubstr("\naccord         -" + blanks + " not installed\n"));
}

TEST_F(Doctor, SaysWhenItsReportCannotBeWritten) {
  InstallUnixDev();
  const Result result = RunShell(Rngctl() + " doctor >/dev/full");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors);
}

TEST_F(Doctor, ReportsMatchTheSchema) {
  const auto matches = [](const std::string& report) {
    return RunShell(MATCHES_SCHEMA " " SCHEMA_DIR "/doctor.schema.json <<'END'\n" + report +
                    "\nEND\n");
  };
  ASSERT_EQ(0, Run("default set dsdr X1").status);
  InstallOneOfEach();
  json report = Examine("", "", 1);
  const Result result = matches(report.dump());
  EXPECT_EQ(0, result.status) << result.errors;
  report.at("generators")[3]["verdict"] = "well";
  EXPECT_NE(0, matches(report.dump()).status);

  InstallX11("crashing");
  InstallKnownPath("no_function");
  const Result bleak = matches(Examine("dsdr").dump());
  EXPECT_EQ(0, bleak.status) << bleak.errors;
}

TEST_F(Doctor, ColoursATerminalUnlessItIsAskedNotTo) {
  InstallPlugin("dsdr", "stub");
  const auto runOnTerminal = [](const std::string& environment) {  // script(1) makes one
    return RunShell("script -qec '" + environment + " " + Rngctl() + " doctor dsdr' " +
                    TreePath("typescript"))
        .output;
  };
  EXPECT_THAT(runOnTerminal("NO_COLOR="), HasSubstr("\033[32mloaded as \"dsdr\"\033[0m"));
  EXPECT_THAT(runOnTerminal("NO_COLOR=1"), Not(HasSubstr("\033")));
  EXPECT_THAT(Run("doctor dsdr").output, Not(HasSubstr("\033")));
}

TEST_F(Doctor, SaysOnATerminalWhatItWaitsFor) {
  InstallPlugin("sobol", "hanging");
  const Result result = RunShell("script -qec '" + Rngctl() + " doctor sobol --timeout 2 >" +
                                 TreePath("report") + "' " + TreePath("typescript"));
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, StartsWith("Waiting for sobol, at most 2 s\r\033[K"));
  EXPECT_THAT(ReadFile(TreePath("report")), HasSubstr("no answer in 2 s"));
}

// --- Exit status

TEST_F(Doctor, AnInstallationInOrderIsASuccess) {
  InstallUnixDev();
  const Result result = Run("doctor");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(Doctor, APluginOutOfOrderIsANegativeAnswer) {
  InstallUnixDev();
  InstallPlugin("Rutoken", "unavailable");
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: 1 of the installed plug-ins is not in order.\n", result.errors);
  EXPECT_EQ(0, Run("doctor unixdev").status);
}

TEST_F(Doctor, AnInstallationWithoutADisplayIsInOrder) {
  InstallUnixDev();
  InstallPlugin("bioqt");
  EXPECT_EQ(0, Run("doctor").status);
  EXPECT_EQ(1, Run("doctor bioqt").status);
}

TEST_F(Doctor, NoUsableGeneratorHasAStatusOfItsOwn) {
  const Result none = Run("doctor");
  EXPECT_EQ(3, none.status);
  EXPECT_EQ("rngctl: No generator is usable.\n", none.errors);
  InstallPlugin("Rutoken", "unavailable");
  EXPECT_EQ(3, Run("doctor").status);
}

TEST_F(Doctor, AKindThatIsNotThereIsANegativeAnswer) {
  InstallUnixDev();
  const Result result = Run("doctor dsdr");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: \"dsdr\": not installed.\n", result.errors);
}

TEST_F(Doctor, AnUnknownKindIsWrongUsage) {
  const Result result = Run("doctor Dsdr");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_EQ(
      "rngctl: There is no kind \"Dsdr\"; the kinds are bioqt, unixx11, dsdr, accord, sobol, "
      "JacartaGost, Rutoken, EsmartGost, biokbd, unixdev, grandmaster, biocore.\n",
      result.errors);
}

TEST_F(Doctor, HelpTellsTheExitStatusAndKeepsTheChildToItself) {
  EXPECT_THAT(Run("doctor --help").output, HasSubstr("Exit status: 0"));
  EXPECT_THAT(Run("--help").output, AllOf(HasSubstr("doctor "), Not(HasSubstr("doctor-child"))));
  for (const char* arguments : {"--timeout 0", "--timeout 3601", "--timeout 010", "--timeout x",
                                "--timeout -1", "dsdr sobol"}) {
    EXPECT_EQ(2, Run(std::string("doctor ") + arguments).status) << arguments;
  }
}
