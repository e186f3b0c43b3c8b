#include "tests/rngctl/openssl/openssl_doctor.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

// --- The draw

TEST_F(OpensslDoctor, NamesTheGeneratorOfADrawThatIsOurs) {
  const Result result = Examine();
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_EQ(
      "Environment      OPENSSL_CONF=" + File() + "\nConfiguration    " + File() +
          "\nModule           " + Module() +
          "\nDraw             from Rutoken 3A7F, through rngaggregator\n"
          "Not examined     programs that ignore the configuration or use a library context of "
          "their own; they draw nothing from rngaggregator, see "
          "openssl-provider-rngaggregator(7)\n",
      result.output);
}

TEST_F(OpensslDoctor, MakesADrawFromTheGeneratorItself) {
  InstallHelper();
  ASSERT_EQ(0, Run("default set unixdev").status);
  const Result result = Examine();
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("from unixdev, through rngaggregator\n"));
  Change("activate = 1", "activate = 1\nfrom = unixdev:");
  EXPECT_THAT(Examine().errors, HasSubstr("The source \"unixdev:\" has no device"));
  Change("activate = 1", "activate = 1\nfrom = unixdev");
  EXPECT_THAT(Examine().output, HasSubstr("from unixdev, through rngaggregator\n"));
}

TEST_F(OpensslDoctor, TellsSettingsThatCannotBeReadFromThoseThatConfigureNothing) {
  InstallHelper();
  const std::string file = TreePath(kSettingsFile);
  WriteFile(file, "[Devices]\n");
  EXPECT_EQ(
      std::string(kNoBytes) +
          "No default generator is configured for this user, or the settings cannot be read. Run "
          "\"rngctl default set KIND\" to choose one, or \"rngctl default\" to see what is "
          "configured.\n",
      ExamineAsUser().errors);
  fs::permissions(file, fs::perms(::geteuid() == 0 ? 0600 : 0));
  const Result result = ExamineAsUser();
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              StartsWith(kNoBytes + ("it is unknown which default is configured: " + file) +
                         " cannot be read (Permission denied: " + file + " has mode "));
  EXPECT_THAT(
      result.output,
      HasSubstr("\nFix: Make it readable for the users of the library: chmod a+r " + file + "\n"));
}

TEST_F(OpensslDoctor, SettingsThatADrawDoesNotNeedAreNotTheFault) {
  fs::create_directories(TreePath(kSettingsFile));
  EXPECT_EQ(0, Examine().status);
  EXPECT_EQ(std::string(kNoBytes) + "The token is gone. Fix: insert it.\n",
            Examine("", "FAKE_DRAW=fail").errors);
}

TEST_F(OpensslDoctor, FindsOurProviderUnderAnotherName) {
  Change("rngaggregator = rngaggregator_provider", "mine = rngaggregator_provider");
  Result result = Examine();
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output,
              HasSubstr("\nModule           " + Module() + "\nDraw             from Rutoken 3A7F"));
  result = Examine("", "FAKE_DRAW=fail");
  EXPECT_EQ(std::string(kNoBytes) + "The token is gone. Fix: insert it.\n", result.errors);
}

TEST_F(OpensslDoctor, RepeatsWhatTheProviderSaysOfAFailedDraw) {
  const Result result = Examine("", "FAKE_DRAW=fail");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(std::string(kNoBytes) + "The token is gone. Fix: insert it.\n", result.errors);
}

// Public bytes and those of keys come from two instances of the generator.
TEST_F(OpensslDoctor, DrawsFromBothInstances) {
  EXPECT_EQ(std::string(kNoBytes) + "The token is gone. Fix: insert it.\n",
            Examine("", "FAKE_DRAW=fail_second").errors);
}

TEST_F(OpensslDoctor, RepeatsWhatOpensslSaysWhereTheConfigurationDoesNotExplainIt) {
  Change("random = RNGAGGREGATOR", "random = RNGAGGREGATOR\nproperties = absent=yes");
  EXPECT_THAT(
      Examine().errors,
      StartsWith(
          std::string(kNoBytes) +
          "OpenSSL says: unsupported (Global default library context, Algorithm (RNGAGGREGATOR"));
}

TEST_F(OpensslDoctor, AddsAdviceToAReasonThatHasNone) {
  for (const char* const advised : {"fail", "end"})
    EXPECT_THAT(Examine("", std::string("FAKE_DRAW=") + advised).output, Not(HasSubstr("\nFix: ")));
  ExpectFault(Examine("", "FAKE_DRAW=fail_without_advice"),
              std::string(kNoBytes) + "The token is gone",
              "Run \"rngctl doctor\" to examine the generators.");
}

TEST_F(OpensslDoctor, AHelperThatTerminatesIsAFailedDraw) {
  EXPECT_THAT(Examine("", "FAKE_DRAW=end").errors, StartsWith(kNoBytes));
}

TEST_F(OpensslDoctor, ADrawWithoutEndEndsAtTheLimit) {
  const Result result = Examine("--timeout 1", "FAKE_DRAW=hang");
  ExpectFault(
      result, std::string(kNoBytes) + "the process that draws did not answer within 1 s",
      "If the generator is slow, allow more with --timeout. Otherwise run \"rngctl doctor\".");
  EXPECT_EQ(0U, CountProcessesOf(Program()));
}

TEST_F(OpensslDoctor, AModuleThatCrashesEndsOnlyItsProcess) {
  fs::copy_file(CRASHING_MODULE, Module(), fs::copy_options::overwrite_existing);
  const Result result = Examine();
  EXPECT_EQ(1, result.status);
  ExpectFault(result,
              std::string(kNoBytes) + "the process that draws crashed with signal 6 (Aborted)",
              "Examine the modules that the configuration names, and run \"rngctl doctor\".");
  EXPECT_THAT(result.output, HasSubstr("\nConfiguration    " + File() + "\n"));
}

TEST_F(OpensslDoctor, AnEngineThatReplacesTheGeneratorIsNotOurs) {
  Change("providers = rngaggregator_providers", "providers = rngaggregator_providers\nengines = e");
  WriteFile(File(), ReadFile(File()) + "\n[e]\nreplacing = r\n[r]\ndynamic_path = " REPLACING_ENGINE
                                       "\ninit = 1\ndefault_algorithms = RAND\n");
  const Result result = Examine();
  ExpectFault(result,
              std::string(kElsewhere) + "an engine replaces OpenSSL's random-number generator",
              "Remove the engine from the configuration.");
}

// --- Users

TEST_F(OpensslDoctor, DrawsAsAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  fs::permissions(TreePath(""), fs::perms(0755));
  const Result result = Examine("--user nobody");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, StartsWith("User             nobody\nEnvironment      OPENSSL_CONF=" +
                                        File() + ", as in this process\n"));
  fs::permissions(File(), fs::perms(0600));
  EXPECT_EQ(kElsewhere + File() + " cannot be read by this user: Permission denied.\n",
            Examine("--user nobody").errors);
}

// What root sees is in order.
TEST_F(OpensslDoctor, SaysHowToExamineWhatAnotherUserSees) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  fs::permissions(TreePath(""), fs::perms(0755));
  EXPECT_THAT(Examine("--user nobody", "FAKE_DRAW=no-token").output,
              HasSubstr("\nFix: Run \"runuser -u nobody -- rngctl doctor\" to examine"));
}

TEST_F(OpensslDoctor, AnotherUserHasNoneOfRootsGroups) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  fs::permissions(TreePath(""), fs::perms(0755));
  fs::permissions(File(), fs::perms(0640));
  const Result result = RunForked([] {
    const gid_t root = 0;
    if (::setgroups(1, &root) != 0) return 126;
    ::setenv("OPENSSL_CONF", File().c_str(), 1);
    ::execl(Rngctl().c_str(), "rngctl", "doctor", "--openssl", "--user", "nobody", nullptr);
    return 127;
  });
  EXPECT_EQ(kElsewhere + File() + " cannot be read by this user: Permission denied.\n",
            result.errors);
}

// Killed, the tool cannot end it.
TEST_F(OpensslDoctor, AProcessOfAnotherUserEndsWithTheTool) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  fs::permissions(TreePath(""), fs::perms(0755));
  const std::string find = "pgrep -f ^" + Program() + " >/dev/null";
  RunShell("OPENSSL_CONF=" + File() + " FAKE_DRAW=hang " + Rngctl() +
           " doctor --openssl --user nobody >/dev/null 2>&1 & until " + find +
           "; do sleep 0.02; done; kill -KILL $!");
  for (int i = 0; i < 600 && CountProcessesOf(Rngctl()) > 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(0U, CountProcessesOf(Rngctl()));
  RunShell("pkill -KILL -f ^" + Program());
}

TEST_F(OpensslDoctor, OnlyRootDrawsAsAnotherUser) {
  const Result result = RunForked([] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "doctor", "--openssl", "--user", "root", nullptr);
    return 127;
  });
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("rngctl: Only root can draw as another user. Run this command with sudo.\n",
            result.errors);
}

TEST_F(OpensslDoctor, SaysThatAnotherUsersProgramsMayHaveOtherVariables) {
  const std::string command =
      "env -u OPENSSL_CONF " + Rngctl() + " doctor --openssl --user \"$(id -un)\"";
  EXPECT_THAT(RunShell(command).output,
              HasSubstr("\nEnvironment      no variable of OpenSSL is set, as in this process\n"));
}

TEST_F(OpensslDoctor, AnyoneMayNameThemselves) {
  const Result result = ExamineAsUser("--user \"$(id -un)\"");
  EXPECT_EQ(0, result.status) << result.errors;
}

TEST_F(OpensslDoctor, RefusesUnknownUsersAndContradictions) {
  const Result unknown = Examine("--user nobody-at-all");
  EXPECT_EQ(2, unknown.status);
  EXPECT_EQ("rngctl: There is no user \"nobody-at-all\".\n", unknown.errors);
  EXPECT_THAT(unknown.output, IsEmpty());
  for (const std::string arguments : {"--openssl unixdev", "--user root", "--openssl --user ''"}) {
    EXPECT_EQ(2, Run("doctor " + arguments).status) << arguments;
  }
}

// --- The report

TEST_F(OpensslDoctor, ReportsInJson) {
  const Result drawn = Examine("--json");
  EXPECT_EQ(0, drawn.status);
  EXPECT_EQ(json({{"user", nullptr},
                  {"environment", {"OPENSSL_CONF=" + File()}},
                  {"configuration", File()},
                  {"module", Module()},
                  {"result", "drawn"},
                  {"generator", "Rutoken 3A7F"},
                  {"problem", nullptr},
                  {"fix", nullptr},
                  {"warnings", json::array()}}),
            json::parse(drawn.output));
  const Result failed = Examine("--json", "FAKE_DRAW=fail");
  EXPECT_EQ("failed", json::parse(failed.output).at("result"));
  EXPECT_EQ(json(), json::parse(failed.output).at("generator"));
  Change("random = RNGAGGREGATOR", "");
  const Result elsewhere = Examine("--json --user \"$(id -un)\"");
  EXPECT_EQ("drawn-elsewhere", json::parse(elsewhere.output).at("result"));
  for (const Result& result : {drawn, failed, elsewhere}) {
    const Result match = MatchSchema("doctor-openssl.schema.json", result.output);
    EXPECT_EQ(0, match.status) << match.errors;
  }
}

// What is not UTF-8 is replaced.
TEST_F(OpensslDoctor, ReportsEveryVariableThatOpensslReads) {
  const Result result =
      Examine("--json",
              "OPENSSL_ENGINES=/e\xFF OPENSSL_MODULES=/m OPENSSL_CONF_INCLUDE=/i OPENSSL_OTHER=/o");
  EXPECT_EQ(json({"OPENSSL_CONF=" + File(), "OPENSSL_CONF_INCLUDE=/i", "OPENSSL_MODULES=/m",
                  "OPENSSL_ENGINES=/e\uFFFD"}),
            json::parse(result.output).at("environment"));
}

TEST_F(OpensslDoctor, ColoursTheResultOnATerminal) {
  const auto lineOnTerminal = [](const std::string& environment) {  // script(1) makes one
    const std::string output =
        RunShell("OPENSSL_CONF=" + File() + " script -qec '" + environment + " " + Rngctl() +
                 " doctor --openssl' " + TreePath("typescript"))
            .output;
    const std::size_t begin = output.find("\nDraw ");
    return output.substr(begin, output.find('\n', begin + 1) - begin);
  };
  EXPECT_THAT(lineOnTerminal("NO_COLOR="),
              HasSubstr(" \033[32mfrom Rutoken 3A7F, through rngaggregator\033[0m"));
  EXPECT_THAT(lineOnTerminal("NO_COLOR=1"), Not(HasSubstr("\033")));
  EXPECT_THAT(lineOnTerminal("NO_COLOR= FAKE_DRAW=fail"),
              HasSubstr(" \033[31mfailed: The token is gone"));
  Change("config_diagnostics = 1", "");
  EXPECT_THAT(lineOnTerminal("NO_COLOR="), HasSubstr(" \033[33mfrom Rutoken 3A7F"));
  Change("random = RNGAGGREGATOR", "");
  EXPECT_THAT(lineOnTerminal("NO_COLOR="),
              HasSubstr(" \033[31mfrom CTR-DRBG of the provider default: "));
}

// The fake draws only this byte.
TEST_F(OpensslDoctor, ShowsNoBytes) {
  const std::string text = Examine().output + Examine("--json").output;
  EXPECT_THAT(text, AllOf(Not(HasSubstr("RRRR")), Not(HasSubstr("5252"))));
}

TEST_F(OpensslDoctor, NamesTheUserInJson) {
  const std::string name = RunShell("id -un").output;
  EXPECT_EQ(
      name,
      json::parse(Examine("--json --user " + name).output).at("user").get<std::string>() + '\n');
}

TEST_F(OpensslDoctor, SettingsThatDoNotExistConfigureNothing) {
  InstallHelper();
  EXPECT_THAT(Examine().errors,
              StartsWith(std::string(kNoBytes) + "No default generator is configured"));
}

TEST_F(OpensslDoctor, SaysWhenItsReportCannotBeWritten) {
  for (const char* draw : {"succeed", "fail"}) {
    const Result result = Examine(">/dev/full", std::string("FAKE_DRAW=") + draw);
    EXPECT_EQ(1, result.status) << draw;
    EXPECT_EQ("rngctl: Cannot write to standard output.\n", result.errors) << draw;
  }
}
