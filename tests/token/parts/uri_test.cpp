// Which tokens and modules a URI means. SoftHSM's package registers its module.

#include "plugins/token/pkcs11/uri.h"

#include "plugins/token/pkcs11/modules.h"
#include "plugins/token/pkcs11/text.h"
#include "tests/support/aggregator_library.h"
#include "tests/token/installed/soft_hsm.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

template <std::size_t size>
void Fill(unsigned char (&field)[size], const std::string& text) {
  std::memset(field, ' ', size);
  std::copy(text.begin(), text.end(), field);
}

CK_TOKEN_INFO Token() {
  CK_TOKEN_INFO token = {};
  Fill(token.manufacturerID, "Example Corp.");
  Fill(token.model, "M 1");
  Fill(token.serialNumber, "0123");
  Fill(token.label, "My; token");
  return token;
}

std::string Difference(const char* uri) { return TokenUri(uri).Difference(Token()); }

// The names of the modules' files.
std::vector<std::string> FilesOf(const char* uri) {
  std::vector<std::string> files;
  const Modules modules{TokenUri(uri)};
  for (const auto& module : modules.All()) {
    files.push_back(module->File().substr(module->File().rfind('/') + 1));
  }
  return files;
}

}  // namespace

TEST(TokenUri, EachAttributeSelectsTokens) {
  for (const char* const uri :
       {"pkcs11:", "pkcs11:manufacturer=Example%20Corp.", "pkcs11:model=M%201",
        "pkcs11:serial=0123", "pkcs11:token=My%3B%20token",
        "pkcs11:model=M%201;serial=0123;manufacturer=Example%20Corp.",
        "pkcs11:model=M%201?module-name=example", "pkcs11:?module-path=/some/file"}) {
    EXPECT_EQ("", Difference(uri)) << uri;
    EXPECT_EQ("", TokenUri(uri).Problem()) << uri;
    EXPECT_TRUE(TokenUri(uri).Matches(Token())) << uri;
  }
}

TEST(TokenUri, SaysHowATokenDiffers) {
  EXPECT_EQ("its manufacturer is \"Example Corp.\" instead of \"Example\"",
            Difference("pkcs11:manufacturer=Example"));
  EXPECT_EQ("its model is \"M 1\" instead of \"M 2\"", Difference("pkcs11:model=M%202"));
  EXPECT_EQ("its serial number is \"0123\" instead of \"012\"", Difference("pkcs11:serial=012"));
  EXPECT_EQ("its label is \"My; token\" instead of \"my; token\"",
            Difference("pkcs11:token=my%3B%20token"));
  EXPECT_FALSE(TokenUri("pkcs11:model=M%201;serial=9").Matches(Token()));
}

TEST(TokenUri, SaysWhatIsWrongWithIt) {
  for (const char* const uri : {"", "http://example.org", "pkcs11:model", "pkcs11:model=%zz",
                                "pkcs11:colour=red", "pkcs11:model=M%201;object=key"}) {
    EXPECT_THAT(TokenUri(uri).Problem(), HasSubstr(std::string("the URI ") + uri)) << uri;
    EXPECT_THAT(FilesOf(uri), IsEmpty()) << uri;
  }
  EXPECT_THAT(TokenUri("pkcs11:model").Problem(), EndsWith(". Rebuild it with a valid one."));
  EXPECT_THAT(TokenUri("pkcs11:colour=red").Problem(), EndsWith(". Rebuild it without them."));
}

TEST(TokenModules, AreThoseThatAreRegistered) {
  const SoftHsm hsm;  // only some users may read the system's
  EXPECT_THAT(FilesOf("pkcs11:"), testing::Contains("libsofthsm2.so"));
  EXPECT_THAT(FilesOf("pkcs11:?module-name=softhsm2"), testing::ElementsAre("libsofthsm2.so"));
  for (const char* const uri : {"pkcs11:", "pkcs11:?module-name=softhsm2"}) {
    EXPECT_THAT(Modules(TokenUri(uri)).Problems(),
                testing::Not(testing::Contains(HasSubstr("No module"))))
        << uri;
  }
}

TEST(TokenModules, AreUnmapped) {
  const SoftHsm hsm;
  EXPECT_THAT(FilesOf("pkcs11:"), testing::Contains("libsofthsm2.so"));
  EXPECT_THAT(FilesOf("pkcs11:?module-name=nothing"), IsEmpty());
  EXPECT_FALSE(IsMapped("libsofthsm2.so"));
}

TEST(TokenText, IsPlain) {
  EXPECT_EQ("a \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\x91",
            Plain("a \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\x91"));
  for (const char* const byte : {"\x01", "\x1B", "\x7F", "\x80", "\xC3", "\xFF", "\xC2\x85"})
    EXPECT_EQ("?", Plain(byte));
  EXPECT_EQ("??", Plain("\xC0\xAF"));            // longer than it needs to be
  EXPECT_EQ("???", Plain("\xE0\x80\xAF"));       // the same
  EXPECT_EQ("???", Plain("\xED\xA0\x80"));       // half of a pair in another encoding
  EXPECT_EQ("????", Plain("\xF4\x90\x80\x80"));  // above the last character
}

TEST(TokenText, IsPlainUpToTheLimits) {
  for (const char* const last :
       {"\x20", "\x7E", "\xC2\xA0", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_EQ(last, Plain(last));
  for (const char* const beyond : {"\x1F", "\xC2\x9F"}) EXPECT_EQ("?", Plain(beyond));
  EXPECT_EQ("???", Plain("\xED\xBF\xBF"));
}

// Some modules pad with zeros.
TEST(TokenText, IsTrimmedAtBothEnds) {
  for (const std::string& field : {std::string(" a b   "), std::string("a b\0\0\0\0", 7),
                                   std::string(" a b\0 \0", 7), std::string("\0 \0\0a b", 7)})
    EXPECT_EQ("a b", Trimmed(reinterpret_cast<const unsigned char*>(field.data()), field.size()));
  const unsigned char empty[16] = {};
  EXPECT_EQ("", Trimmed(empty));
}

TEST(TokenModules, AreNamedIfTheyAreMissing) {
  const Modules noName(TokenUri("pkcs11:?module-name=nothing"));
  EXPECT_THAT(noName.All(), IsEmpty());
  EXPECT_THAT(noName.Problems(), testing::ElementsAre(HasSubstr("\"nothing\"")));
  const Modules noFile(TokenUri("pkcs11:?module-path=/no/module.so"));
  EXPECT_THAT(noFile.All(), IsEmpty());
  EXPECT_THAT(noFile.Problems(), testing::ElementsAre(HasSubstr("/no/module.so")));
}
