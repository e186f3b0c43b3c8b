// The module itself, as OpenSSL sees it.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>

using testing::HasSubstr;
using testing::Not;

namespace {

class ProviderModule : public OpensslTest {};

}  // namespace

TEST_F(ProviderModule, IsLoadedByOpenssl) {
  EXPECT_THAT(Run("openssl list -providers").output,
              HasSubstr("name: rngaggregator\n    version: " VERSION "\n    status: active\n"));
  EXPECT_THAT(Run("openssl list -random-generators").output,
              HasSubstr("RNGAGGREGATOR @ rngaggregator"));
  EXPECT_THAT(Run("openssl list -digest-algorithms -cipher-algorithms").output,
              Not(HasSubstr("RNGAGGREGATOR")));
  EXPECT_EQ(0u, CountDraws());
}

// Otherwise it could load a second copy of libcrypto, or the C++ library, into the host.
TEST_F(ProviderModule, NeedsOnlyTheCLibrary) {
  EXPECT_EQ(
      "libc.so.6\n",
      Run("readelf -dW " + Module() + " | sed -n 's/.*(NEEDED).*\\[\\(.*\\)\\]/\\1/p'").output);
}

TEST_F(ProviderModule, ExportsOnlyItsEntryPoint) {
  EXPECT_EQ("OSSL_provider_init\n",
            Run("nm -D --defined-only --format=just-symbols " + Module()).output);
}

TEST_F(ProviderModule, DoesWhatOpensslExpectsOfARandomGenerator) {
  const Result result = Run(RANDOM_OBJECT " grandmaster");
  EXPECT_EQ("", result.output) << result.errors;
  EXPECT_EQ(0, result.status);
}

TEST_F(ProviderModule, KeepsTheContractOfCallsThatAreRare) {
  // Memory that was freed must not be used.
  const Result result = Run("MALLOC_PERTURB_=85 " MODULE_CALLS " " + Module());
  EXPECT_EQ("", result.output) << result.errors;
  EXPECT_EQ(0, result.status);
}

// As in the folder of modules of another OpenSSL.
TEST_F(ProviderModule, IsLoadedThroughASymbolicLink) {
  std::filesystem::rename(TreePath("lib/ossl-modules"), TreePath("lib/modules"));
  std::filesystem::create_directories(TreePath("lib/other/ossl"));
  std::filesystem::create_directory_symlink(TreePath("lib/other/ossl"),
                                            TreePath("lib/ossl-modules"));
  std::filesystem::create_symlink(TreePath("lib/modules/rngaggregator.so"), Module());
  EXPECT_EQ("o", RunHost("draw").output);
}

TEST_F(ProviderModule, StartsNoHelperBeforeADraw) {
  const std::string trace = TreePath("started");
  std::filesystem::remove(HelperProgram());
  WriteFile(HelperProgram(), "#!/bin/sh\ntouch " + trace + '\n');
  std::filesystem::permissions(HelperProgram(), std::filesystem::perms(0755));
  EXPECT_EQ(0, Run("openssl dgst -sha256 /dev/null").status);
  EXPECT_FALSE(std::filesystem::exists(trace));
  EXPECT_TRUE(Refused(Run("openssl rand 32"), "has terminated"));
  EXPECT_TRUE(std::filesystem::exists(trace));
}
