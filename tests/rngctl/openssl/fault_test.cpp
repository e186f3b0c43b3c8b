#include "tests/rngctl/openssl/openssl_doctor.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

std::string AdviseStart() {
  return "Write \"openssl_conf = rngaggregator_init\" before the first section of " +
         TreePath("openssl.cnf") +
         ". If it includes " RNG_OPENSSL_CONFIGURATION ", make that its first line instead.";
}

}  // namespace

// --- Why it is not ours

TEST_F(OpensslDoctor, FindsAFileThatIsMissingOrNotRead) {
  fs::remove(File());
  ExpectElsewhere(File() + " does not exist", "Correct the variable OPENSSL_CONF.");
  fs::create_directory(File());
  ExpectElsewhere(File() + " is a directory", "Replace it with a file.");
  fs::remove(File());
  WriteFile(File(), good);
  ExpectFault(Examine("", "OPENSSL_CONF=" + File() + "/below"),
              kElsewhere + File() + "/below does not exist", "Correct the variable OPENSSL_CONF.");
  ExpectFault(Examine("", "OPENSSL_CONF="),
              std::string(kElsewhere) + "OPENSSL_CONF is empty, so OpenSSL reads no configuration",
              "Unset the variable, or set it to the path of a configuration.");
}

TEST_F(OpensslDoctor, NamesThePackageOfAConfigurationThatIsNotInstalled) {
  fs::remove(File());
  ExpectFault(
      RunShell("env -u OPENSSL_CONF LD_PRELOAD=" DEFAULT_FILE " " + Rngctl() + " doctor --openssl"),
      kElsewhere + File() + " does not exist",
      "Install OpenSSL's configuration, in Debian with the package openssl.");
}

TEST_F(OpensslDoctor, FindsAFileThatTheUserMayNotRead) {
  fs::permissions(File(), fs::perms(0600));
  if (::geteuid() != 0) fs::permissions(File(), fs::perms(0));
  ExpectFault(ExamineAsUser(),
              kElsewhere + File() + " cannot be read by this user: Permission denied",
              "Let the user read it: chmod o+r " + File());
}

TEST_F(OpensslDoctor, FindsAFolderThatTheUserMayNotSearch) {
  fs::create_directory(TreePath("closed"));
  fs::rename(File(), TreePath("closed/openssl.cnf"));
  fs::create_symlink(TreePath("closed/openssl.cnf"), File());
  fs::permissions(TreePath("closed"), fs::perms(::geteuid() == 0 ? 0700 : 0));
  const Result result = ExamineAsUser();
  fs::permissions(TreePath("closed"), fs::perms(0700));
  ExpectFault(result,
              kElsewhere + File() + " cannot be read by this user: " + TreePath("closed") +
                  " cannot be searched",
              "Let the user search it: chmod o+x " + TreePath("closed"));
}

TEST_F(OpensslDoctor, FindsASyntaxErrorWithItsLine) {
  WriteFile(File(), "a = 1\nb = 2\n[c\n" + good);
  const Result result = Examine();
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith(kElsewhere + ("OpenSSL cannot read line 3 of " + File()) +
                                        ": missing close square bracket"));
  EXPECT_THAT(result.output, HasSubstr("\nFix: Correct line 3 of " + File() + ".\n"));
}

// OpenSSL reports a missing file to include, but continues.
TEST_F(OpensslDoctor, AMissingIncludedFileIsNotTheFault) {
  const std::string include = ".include " + TreePath("gone") + "\n";
  WriteFile(File(), include + good);
  EXPECT_EQ(0, Examine().status);
  WriteFile(File(), include + "[c\n" + good);
  EXPECT_THAT(Examine().errors,
              StartsWith(kElsewhere + ("OpenSSL cannot read line 2 of " + File()) +
                         ": missing close square bracket"));
}

TEST_F(OpensslDoctor, FindsAFileThatChoosesNothing) {
  WriteFile(File(), "[a]\nb = c\n");
  ExpectElsewhere(
      File() + " has no line \"openssl_conf\" before its first section",
      "Make \".include " RNG_OPENSSL_CONFIGURATION "\" the first line of " + File() +
          ", and remove its own line \"openssl_conf\". See openssl-provider-rngaggregator(7).");
}

TEST_F(OpensslDoctor, FindsALaterLineThatReplacesOurs) {
  WriteFile(File(),
            good + "\nopenssl_conf = o\n[o]\nproviders = p\n[p]\ndefault = d\n[d]\nactivate = 1\n");
  ExpectElsewhere("the section [o] of " + File() + " has no line \"random\"",
                  "Remove the line \"openssl_conf\" of " + File() +
                      ", which replaces the one of " RNG_OPENSSL_CONFIGURATION ".");
}

TEST_F(OpensslDoctor, FindsOursWithoutTheLineThatStartsIt) {
  const std::string problem = File() + " has no line \"openssl_conf\" before its first section";
  Change("openssl_conf = rngaggregator_init", "");
  ExpectElsewhere(problem, AdviseStart());
  WriteFile(TreePath("ours.cnf"), good);
  WriteFile(File(), "[a]\nb = c\n.include " + TreePath("ours.cnf") + "\n");
  ExpectElsewhere(problem, AdviseStart());
}

TEST_F(OpensslDoctor, FindsMissingSectionsAndLines) {
  const std::string fix = "Restore it as it is in " RNG_OPENSSL_CONFIGURATION ".";
  Change("[rngaggregator_init]", "[other]");
  ExpectElsewhere(File() + " has no section [rngaggregator_init], which \"openssl_conf\" names",
                  fix);
  Change("random = rngaggregator_random", "");
  ExpectElsewhere("the section [rngaggregator_init] of " + File() + " has no line \"random\"", fix);
  Change("[rngaggregator_random]", "[other]");
  ExpectElsewhere(
      File() + " has no section [rngaggregator_random], which [rngaggregator_init] names", fix);
  Change("random = RNGAGGREGATOR", "");
  ExpectElsewhere(
      "the section [rngaggregator_random] of " + File() + " has no line \"random = RNGAGGREGATOR\"",
      fix);
  Change("random = RNGAGGREGATOR", "random = CTR-DRBG");
  ExpectElsewhere(
      "the section [rngaggregator_random] of " + File() + " chooses the generator \"CTR-DRBG\"",
      fix);
}

TEST_F(OpensslDoctor, FindsABrokenSectionBeforeOurs) {
  Change("random = rngaggregator_random", "alg_section = absent\nrandom = rngaggregator_random");
  ExpectElsewhere(
      "OpenSSL stops at the line \"alg_section\" in [rngaggregator_init]: error loading section",
      "Correct it, or move the line \"random\" before it. OpenSSL ignores what follows.");
}

// --- Why there are no bytes

TEST_F(OpensslDoctor, FindsWhatKeepsTheModuleFromBeingLoaded) {
  const std::string install =
      "Install the package openssl-provider-rngaggregator, or correct the path of the module.";
  const std::string reinstall = "Reinstall the package openssl-provider-rngaggregator.";
  WriteFile(Module(), "not a library");
  EXPECT_THAT(Examine().errors,
              AllOf(StartsWith(kNoBytes + std::string("the module cannot be opened: ") + Module()),
                    HasSubstr("file too short")));
  fs::copy_file(REPLACING_ENGINE, Module(), fs::copy_options::overwrite_existing);
  ExpectNoBytes(
      "the module " + Module() + " is not a provider: it has no function OSSL_provider_init",
      reinstall);
  fs::remove(Module());
  ExpectNoBytes("the module " + Module() + " does not exist", install);
  Change("module = " + Module(), "module = other.so");
  ExpectNoBytes("the module " + TreePath("lib/other.so") + " does not exist", install,
                "OPENSSL_MODULES=" + TreePath("lib"));
}

TEST_F(OpensslDoctor, FindsAProviderThatIsNotChosen) {
  const std::string section = "the section [rngaggregator_init] of " + File();
  Change("providers = rngaggregator_providers", "");
  ExpectNoBytes(section + " has no line \"providers\"",
                "Add \"providers = SECTION\", and that section with a line \"rngaggregator\".");
  Change("rngaggregator = rngaggregator_provider", "");
  ExpectNoBytes(
      "the section [rngaggregator_providers] of " + File() + " does not name the provider",
      "Add \"rngaggregator = SECTION\", and that section with the path of the module.");
  Change("[rngaggregator_provider]", "[other]");
  ExpectNoBytes(
      File() + " has no section [rngaggregator_provider], which [rngaggregator_providers] names",
      "Add that section, with the path of the module.");
  Change("activate = 1", "");
  ExpectNoBytes(
      "the section [rngaggregator_provider] of " + File() + " does not activate the provider",
      "Add \"activate = 1\" to it.");
}

// --- Warnings

TEST_F(OpensslDoctor, WarnsOfWhatCouldMakeProgramsDrawElsewhere) {
  Change("config_diagnostics = 1", "config_diagnostics = 0");
  Result result = Examine();
  EXPECT_EQ(0, result.status);
  const std::string warning =
      "\nWarning: The configuration has no line \"config_diagnostics = 1\" before its first "
      "section. "
      "Without it, no program notices when OpenSSL cannot apply a part of the configuration.\n";
  EXPECT_THAT(result.output, HasSubstr(warning));
  EXPECT_THAT(Examine("", "FAKE_DRAW=fail").output, HasSubstr(warning));
  Change("random = rngaggregator_random\nproviders = rngaggregator_providers",
         "providers = rngaggregator_providers\nrandom = rngaggregator_random");
  result = Examine();
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(
      result.output,
      HasSubstr("\nWarning: The line \"random\" is not the first in [rngaggregator_init]. If a "
                "line before it fails, programs draw from OpenSSL's own generator.\n"));
}

TEST_F(OpensslDoctor, WarnsOfALineThatTheProviderIgnores) {
  Change("activate = 1", "activate = 1\nhardware_id = 3A7F");
  const Result result = Examine();
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              HasSubstr("\nWarning: The line \"hardware_id\" in [rngaggregator_provider] is "
                        "ignored. The provider reads \"kind\", \"hardware-id\" and \"from\".\n"));
}

TEST_F(OpensslDoctor, WarnsThatNoOtherProviderIsActive) {
  Change("[rngaggregator_default_provider]\nactivate = 1", "[rngaggregator_default_provider]");
  const Result result = Examine();
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              HasSubstr("\nWarning: No section that [rngaggregator_providers] names "
                        "activates another provider, so programs have random bytes, but no ciphers "
                        "and no keys. Add \"activate = 1\" to that of \"default\".\n"));
}

// In the section that "openssl_conf" names, OpenSSL ignores what follows the last dot of a name; in the sections of
// providers, what precedes the first dot.
TEST_F(OpensslDoctor, ReadsNumberedLinesAsOpensslDoes) {
  std::string numbered = good;
  for (const auto& [from, to] :
       {std::pair("random = rngaggregator_random", "random.1 = rngaggregator_random"),
        std::pair("providers = ", "providers.1 = "),
        std::pair("rngaggregator = r", "1.rngaggregator = r"),
        std::pair("default = r", "1.b.default = r"), std::pair("module = ", "1.module = "),
        std::pair("activate = 1", "1.activate = 1\n2.kind = unixdev")}) {
    numbered = Replaced(numbered, from, to);
  }
  WriteFile(File(), numbered);
  const Result drawn = Examine();
  EXPECT_EQ(0, drawn.status) << drawn.errors;
  EXPECT_THAT(drawn.output,
              AllOf(HasSubstr("\nModule           " + Module() + "\n"), Not(HasSubstr("Warning"))));
  fs::remove(Module());
  ExpectNoBytes(
      "the module " + Module() + " does not exist",
      "Install the package openssl-provider-rngaggregator, or correct the path of the module.");
}

// OpenSSL ignores each of these lines.
TEST_F(OpensslDoctor, ANumberInTheWrongPlaceMakesAnotherName) {
  Change("openssl_conf = rngaggregator_init", "openssl_conf.1 = rngaggregator_init");
  ExpectElsewhere(File() + " has no line \"openssl_conf\" before its first section", AdviseStart());
  Change("random = rngaggregator_random", "random.a.1 = rngaggregator_random");
  ExpectElsewhere("the section [rngaggregator_init] of " + File() + " has no line \"random\"",
                  "Restore it as it is in " RNG_OPENSSL_CONFIGURATION ".");
  Change("random = RNGAGGREGATOR", "random.1 = RNGAGGREGATOR");
  ExpectElsewhere(
      "the section [rngaggregator_random] of " + File() + " has no line \"random = RNGAGGREGATOR\"",
      "Restore it as it is in " RNG_OPENSSL_CONFIGURATION ".");
  for (const char* line : {"activate.1 = 1", "1.a.activate = 1"}) {
    Change("activate = 1", line);
    ExpectNoBytes(
        "the section [rngaggregator_provider] of " + File() + " does not activate the provider",
        "Add \"activate = 1\" to it.");
  }
}

TEST_F(OpensslDoctor, WarnsOfNothingIfAllIsInOrder) {
  for (const char* lines :
       {"kind = unixdev\nhardware-id = A1", "from = unixdev", "identity = mine\nsoft_load = 1"}) {
    Change("activate = 1", std::string("activate = 1\n") + lines);
    const Result result = Examine();
    EXPECT_EQ(0, result.status) << lines;
    EXPECT_THAT(result.output, Not(HasSubstr("Warning"))) << lines;
  }
}

// OpenSSL reads a number, so a word means 0.
TEST_F(OpensslDoctor, AWordDoesNotTurnTheDiagnosticsOn) {
  for (const auto& [value, isOn] :
       {std::pair("off", false), {"on", false}, {"00", false}, {"2", true}}) {
    Change("config_diagnostics = 1", std::string("config_diagnostics = ") + value);
    EXPECT_EQ(isOn, Examine().output.find("\nWarning: ") == std::string::npos) << value;
  }
}

TEST_F(OpensslDoctor, WithoutAFileTheConfigurationIsNone) {
  EXPECT_THAT(Examine("", "OPENSSL_CONF=").output, HasSubstr("\nConfiguration    none\n"));
}
