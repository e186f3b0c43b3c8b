// Real programs, which know nothing of this library.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <regex>
#include <unistd.h>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

class Programs : public OpensslTest {};

// The hexadecimal bytes under a heading of "openssl pkey -text".
std::string PrivatePart(const std::string& text) {
  const std::size_t begin = text.find("priv:") + 5;
  const std::size_t end = text.find("pub:");
  return std::regex_replace(text.substr(begin, end - begin), std::regex("[^0-9a-f]"), "");
}

}  // namespace

TEST_F(Programs, OpensslRandDrawsFromTheDefault) {
  const Result result = Run("openssl rand -hex 64");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(129u, result.output.size());
  EXPECT_TRUE(HasWatermark(result.output)) << result.output;
}

TEST_F(Programs, AnEcKeyIsDrawnFromTheDefault) {
  const Result result = Run(
      "openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 | openssl pkey -text -noout");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_TRUE(HasWatermark(PrivatePart(result.output))) << result.output;
}

TEST_F(Programs, AnEd25519KeyIsDrawnFromTheDefault) {
  const Result result = Run("openssl genpkey -algorithm ED25519 | openssl pkey -text -noout");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_TRUE(HasWatermark(PrivatePart(result.output))) << result.output;
}

TEST_F(Programs, ACertificateIsMade) {
  const Result result =
      Run("openssl req -x509 -newkey rsa:2048 -nodes -keyout /dev/null -subj /CN=test -config "
          "/etc/ssl/openssl.cnf");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("BEGIN CERTIFICATE"));
  EXPECT_LT(0u, CountDraws());
}

TEST_F(Programs, AFileThatIncludesTheConfigurationHasItsOwnDefaultSection) {
  const std::string file = TreePath("other.cnf");
  WriteFile(file, ".include " + ConfigurationFile() + "\nasn1 = INTEGER:77\n");
  EXPECT_THAT(Run("openssl asn1parse -genconf " + file).output, HasSubstr("INTEGER           :4D"));
  EXPECT_TRUE(HasWatermark(Run("OPENSSL_CONF=" + file + " openssl rand -hex 64").output));
}

TEST_F(Programs, PythonDrawsFromTheDefault) {
  const Result result = Run("python3 -c 'import ssl; print(ssl.RAND_bytes(64).hex())'");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_TRUE(HasWatermark(result.output)) << result.output;
}

// Server and client, over a socket in the test's directory. "-rev" makes the server send lines back.
TEST_F(Programs, AServerAndAClientConnect) {
  const Result result = Run("cd " + TreePath("") + R"(
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout key -out certificate \
      -subj /CN=localhost -config /etc/ssl/openssl.cnf 2>/dev/null || exit 1
    openssl s_server -unix socket -key key -cert certificate -rev -naccept 1 >server.log 2>&1 &
    while [ ! -S socket ]; do sleep 0.05; done
    { echo olleh; sleep 1; } | openssl s_client -unix socket -CAfile certificate -verify_return_error -quiet -no_ign_eof 2>client.log
    wait)");
  EXPECT_THAT(result.output, HasSubstr("hello"));
  EXPECT_LT(3u, CountDraws());
  EXPECT_TRUE(AllHelpersExit());
}

TEST_F(Programs, NoFileIsLeftWithoutAKey) {
  Command("fail");
  const std::string file = TreePath("key.pem");
  const Result result =
      Run("openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out " + file);
  EXPECT_TRUE(Refused(result, "A draw from the generator \"grandmaster\" failed"));
  EXPECT_EQ("", ReadFile(file));
}
