// The user's default is a token: of a mock PKCS#11 module that counts draws, or of SoftHSM, which itself uses libcrypto.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"
#include "tests/token/installed/soft_hsm.h"
#include "tests/token/mock_tokens.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

class KeyFromToken : public OpensslTest {
 protected:
  static void InstallToken(const std::string& plugin, const std::string& device) {
    std::filesystem::copy_file(plugin, TreePath("lib/librngrutoken.so"));
    WriteFile(TreePath("etc/rng.ini"),
              "[Devices]\nRandomNumberGeneratorType=Rutoken\nRandomNumberGeneratorHardwareID=" +
                  device + '\n');
  }

  // No other draw has the size of this private key.
  static Result MakeKey() { return Run("openssl genpkey -algorithm ED448"); }
  static constexpr unsigned long kKeySize = 57;
};

}  // namespace

TEST_F(KeyFromToken, IsDrawnInTheModule) {
  const MockTokens tokens;
  tokens.Set({"slot id=0 serial=A1", "slot id=1 serial=B2"});
  InstallToken(MOCK_PLUGIN, "B2");
  const Result result = MakeKey();
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("BEGIN PRIVATE KEY"));
  EXPECT_THAT(tokens.Pieces(), testing::Contains(kKeySize));
  EXPECT_THAT(tokens.OpenedSlots(), testing::Contains(1u));
}

TEST_F(KeyFromToken, IsNotMadeWithoutTheToken) {
  const MockTokens tokens;
  tokens.Set({"slot id=0 serial=A1", "slot id=1 serial=B2 present=no"});
  InstallToken(MOCK_PLUGIN, "B2");
  const Result result = MakeKey();
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(Refused(result, "The generator \"Rutoken\" refuses the device \"B2\"."));
  EXPECT_THAT(tokens.Pieces(), testing::Not(testing::Contains(kKeySize)));
}

TEST_F(KeyFromToken, IsNotMadeAfterTheTokenIsTakenOut) {
  const MockTokens tokens;
  tokens.Set({"slot id=0 serial=A1"});
  InstallToken(MOCK_PLUGIN, "A1");
  const std::string script = std::getenv("MOCK_TOKENS");
  const Result result =
      RunHost("shell 'echo slot id=0 serial=A1 life=2 present=no > " + script + "'");
  EXPECT_EQ("X-", result.output);  // the bytes of the token have no watermark
}

TEST_F(KeyFromToken, IsDrawnFromSoftHsm) {
  const SoftHsm hsm;
  const std::string serial = hsm.Add("first");
  InstallToken(SOFTHSM_PLUGIN, serial);
  EXPECT_THAT(MakeKey().output, HasSubstr("BEGIN PRIVATE KEY"));
  hsm.TakeOut(serial);
  const Result result = MakeKey();
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(Refused(result, "Rutoken"));
}
