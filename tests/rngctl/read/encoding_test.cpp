#include "tools/rngctl/commands/read/encoding.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string Encoded(std::string_view bytes, Encoding encoding) {
  const SecretBytes text = Encode(SecretBytes(bytes.begin(), bytes.end()), encoding);
  return {text.begin(), text.end()};
}

}  // namespace

TEST(Encode, GivesHexadecimalDigits) {
  EXPECT_EQ("", Encoded("", Encoding::kHex));
  EXPECT_EQ("00017f80ff", Encoded(std::string_view("\x00\x01\x7f\x80\xff", 5), Encoding::kHex));
}

TEST(Encode, GivesPaddedBase64) {
  const struct {
    std::string_view bytes;
    const char* text;
  } kCases[] = {{"", ""},
                {"f", "Zg=="},
                {"fo", "Zm8="},
                {"foo", "Zm9v"},
                {"foob", "Zm9vYg=="},
                {"fooba", "Zm9vYmE="},
                {"\xff\xff\xff", "////"},
                {"\xfb\xef\xbe", "++++"}};
  for (const auto& [bytes, text] : kCases) EXPECT_EQ(text, Encoded(bytes, Encoding::kBase64));
}

TEST(Encode, LeavesRawBytesAlone) {
  EXPECT_EQ(std::string("a\0b", 3), Encoded(std::string_view("a\0b", 3), Encoding::kRaw));
}
