// Which generator the provider's parameters name.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

class Choice : public OpensslTest {
 protected:
  static Result Draw() { return Run("openssl rand -hex 32"); }
  static std::string Draws() { return ReadFile(TreePath("script.draws")); }
};

}  // namespace

TEST_F(Choice, TheDefaultWithItsDevice) {
  WriteFile(
      TreePath("etc/rng.ini"),
      "[Devices]\nRandomNumberGeneratorType=grandmaster\nRandomNumberGeneratorHardwareID=A1\n");
  EXPECT_TRUE(HasWatermark(Draw().output));
  EXPECT_EQ("grandmaster A1\n", Draws());
}

TEST_F(Choice, NoDefault) {
  fs::remove(TreePath("etc/rng.ini"));
  EXPECT_TRUE(Refused(Draw(), "No default generator is configured"));
}

// No interactive kind is used instead.
TEST_F(Choice, ADefaultThatIsNotLoaded) {
  WriteFile(TreePath("etc/rng.ini"), "[Devices]\nRandomNumberGeneratorType=Rutoken\n");
  EXPECT_TRUE(Refused(Draw(), "The generator \"Rutoken\" is not loaded."));
}

TEST_F(Choice, AKind) {
  Configure("kind = unixdev");
  const Result result = Draw();
  EXPECT_EQ(65u, result.output.size()) << result.errors;
  EXPECT_EQ("", Draws());
}

TEST_F(Choice, AKindWithADevice) {
  Configure("kind = grandmaster\nhardware-id = A1");
  EXPECT_TRUE(HasWatermark(Draw().output));
  EXPECT_EQ("grandmaster A1\n", Draws());
  EXPECT_EQ("", Run(RANDOM_OBJECT " 'grandmaster A1'").output);
}

TEST_F(Choice, ADeviceThatIsMissing) {
  Configure("kind = grandmaster\nhardware-id = B2");
  EXPECT_TRUE(Refused(Draw(), "The generator \"grandmaster\" refuses the device \"B2\"."));
}

TEST_F(Choice, SeveralSources) {
  Configure("from = unixdev,grandmaster:A1");
  const Result result = Draw();
  EXPECT_EQ(65u, result.output.size()) << result.errors;
  EXPECT_FALSE(HasWatermark(result.output));
  EXPECT_EQ("grandmaster A1\n", Draws());
}

TEST_F(Choice, SeveralSourcesAreTheLastGenerator) {
  Configure("from = unixdev,grandmaster:A1");
  EXPECT_EQ("XX unixdev,grandmaster:A1", RunHost("shell_and_name true").output);
}

TEST_F(Choice, OneOfSeveralSourcesFails) {
  Configure("from = unixdev,grandmaster");
  Command("fail");
  EXPECT_TRUE(Refused(Draw(), "The generator \"grandmaster\" failed"));
}

// As the alarm of a single generator does.
TEST_F(Choice, TheAlarmOfOneOfSeveralSourcesStays) {
  Configure("from = unixdev,grandmaster");
  Command("zeros");
  EXPECT_EQ("--", RunHost("shell 'echo draw > " + TreePath("script") + "'").output);
  EXPECT_EQ(1u, CountDraws());
}

TEST_F(Choice, OneOfSeveralSourcesIsMissing) {
  Configure("from = unixdev,Rutoken");
  EXPECT_TRUE(Refused(Draw(), "The generator \"Rutoken\""));
}

TEST_F(Choice, AKindThatAsksTheUser) {
  fs::copy(WATERMARKING_PLUGINS "/librngbiokb.so", TreePath("lib"));
  Configure("kind = biokbd");
  EXPECT_TRUE(Refused(Draw(), "The generator \"biokbd\" asks the user"));
  WriteFile(TreePath("etc/rng.ini"), "[Devices]\nRandomNumberGeneratorType=biokbd\n");
  Configure("");
  EXPECT_TRUE(Refused(Draw(), "The generator \"biokbd\" asks the user"));
  Configure("from = unixdev,biokbd");
  EXPECT_TRUE(Refused(Draw(), "The generator \"biokbd\" asks the user"));
  EXPECT_EQ("", Draws());
}

TEST_F(Choice, AKindThatNeedsADisplay) {
  Configure("kind = unixx11");
  EXPECT_TRUE(Refused(Draw(), "The generator \"unixx11\" asks the user"));
  WriteFile(TreePath("etc/rng.ini"), "[Devices]\nRandomNumberGeneratorType=bioqt\n");
  Configure("");
  EXPECT_TRUE(Refused(Draw(), "The generator \"bioqt\" asks the user"));
}

// The X server might not answer.
TEST_F(Choice, TheDisplayIsNotUsed) {
  EXPECT_TRUE(HasWatermark(Run("DISPLAY=:7 openssl rand -hex 32").output));
  EXPECT_EQ("grandmaster \n", Draws());
}

TEST_F(Choice, SourcesThatCannotBeCombined) {
  Configure("from = unixdev,unixdev:hwrng");
  EXPECT_TRUE(Refused(Draw(), "Fix: correct \"from\" in OpenSSL's configuration."));
}

// Its flags decide, whatever its name is.
TEST_F(Choice, AGeneratorThatSaysThatItNeedsTheUser) {
  fs::copy(WATERMARKING_PLUGINS "/librngdsdr.so", TreePath("lib"));
  for (const char* const lines : {"kind = dsdr", "from = unixdev,dsdr"}) {
    Configure(lines);
    const Result result = Draw();
    EXPECT_TRUE(Refused(result, "The generator \"dsdr\" asks the user"));
    EXPECT_TRUE(Refused(result, "in the provider's section of OpenSSL's configuration."));
  }
  EXPECT_EQ("", Draws());
}

TEST_F(Choice, ContradictoryParameters) {
  Configure("kind = unixdev\nfrom = unixdev,grandmaster");
  EXPECT_TRUE(Refused(Draw(), "has \"from\" together with \"kind\""));
  Configure("hardware-id = A1\nfrom = unixdev,grandmaster");
  EXPECT_TRUE(Refused(Draw(), "has \"from\" together with \"kind\""));
  Configure("hardware-id = A1");
  EXPECT_TRUE(Refused(Draw(), "\"hardware-id\" without \"kind\""));
}

// If it were truncated, it could name another generator.
TEST_F(Choice, AParameterWithoutAValue) {
  Configure("kind =\nhardware-id =\nfrom =\n");
  EXPECT_TRUE(HasWatermark(Draw().output));
}

TEST_F(Choice, AParameterThatIsTooLong) {
  for (const char* const name : {"from", "kind", "hardware-id"}) {
    Configure(name + (" = " + std::string(512, ',')));
    EXPECT_TRUE(Refused(Draw(), "is too long")) << name;
  }
  EXPECT_EQ("", Draws());
  Configure("from = " + std::string(511, ','));
  EXPECT_TRUE(Refused(Draw(), "The list of sources \",,,"));
}

TEST_F(Choice, ParametersOfHostileText) {
  for (const std::string line :
       {"kind = %s%n%s%n", "kind = \"a\\nb\"", "from = ,", "from = unixdev:;rm -rf ."}) {
    Configure(line);
    EXPECT_TRUE(Refused(Draw(), "rngaggregator")) << line;
  }
}
