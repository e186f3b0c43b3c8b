// The module itself, as OpenSSL sees it.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>

using testing::HasSubstr;

namespace {

class ProviderModule : public OpensslTest {};

}  // namespace

TEST_F(ProviderModule, IsLoadedByOpenssl) {
  EXPECT_THAT(Run("openssl list -providers").output,
              HasSubstr("name: rngaggregator\n    version: "));
  EXPECT_THAT(Run("openssl list -random-generators").output,
              HasSubstr("RNGAGGREGATOR @ rngaggregator"));
  EXPECT_EQ(0u, CountDraws());
}

// Otherwise it could bring a second copy of libcrypto, or the C++ library, into a program.
TEST_F(ProviderModule, NeedsTheLibraryOfCAlone) {
  EXPECT_EQ(
      "libc.so.6\n",
      Run("readelf -dW " + Module() + " | sed -n 's/.*(NEEDED).*\\[\\(.*\\)\\]/\\1/p'").output);
}

TEST_F(ProviderModule, ExportsItsEntryAlone) {
  EXPECT_EQ("OSSL_provider_init\n",
            Run("nm -D --defined-only --format=just-symbols " + Module()).output);
}

TEST_F(ProviderModule, KeepsTheContractOfGenerators) {
  const Result result = Run(RANDOM_OBJECT);
  EXPECT_EQ("", result.output) << result.errors;
  EXPECT_EQ(0, result.status);
}

// A program that needs no bytes starts no other.
TEST_F(ProviderModule, StartsNothingWithoutADraw) {
  const std::string trace = TreePath("started");
  std::filesystem::remove(DrawingProgram());
  WriteFile(DrawingProgram(), "#!/bin/sh\ntouch " + trace + '\n');
  std::filesystem::permissions(DrawingProgram(), std::filesystem::perms(0755));
  EXPECT_EQ(0, Run("openssl dgst -sha256 /dev/null").status);
  EXPECT_FALSE(std::filesystem::exists(trace));
  EXPECT_TRUE(Refused(Run("openssl rand 32"), "has terminated"));
  EXPECT_TRUE(std::filesystem::exists(trace));
}
