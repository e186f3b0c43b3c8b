#include "tools/rngctl/terminal/likeness.h"

#include <gtest/gtest.h>

namespace {

const std::vector<std::string> kKinds = {"bioqt",   "dsdr",       "sobol",   "JacartaGost",
                                         "Rutoken", "EsmartGost", "unixdev", "biokbd"};

std::string LikenessOf(const std::string& text) { return FindLikeness(text, kKinds); }

}  // namespace

TEST(FindLikeness, IgnoresUpperAndLowerCase) {
  EXPECT_EQ("unixdev", LikenessOf("UnixDev"));
  EXPECT_EQ("JacartaGost", LikenessOf("jacartagost"));
  EXPECT_EQ("AZ", FindLikeness("az", {"AZ"}));
  EXPECT_EQ("", FindLikeness("@[", {"`{"}));  // beside the letters
}

TEST(FindLikeness, FindsAMisspeltName) {
  for (const char* text : {"unixdv", "unix-dev", "unxidev", "uinxdve", "unixdev1", "inixdeb"}) {
    EXPECT_EQ("unixdev", LikenessOf(text)) << text;
  }
  EXPECT_EQ("dsdr", LikenessOf("dsrd"));
  EXPECT_EQ("sobol", LikenessOf("sobo1"));
}

TEST(FindLikeness, FindsNothingForWhatIsFarFromEveryName) {
  for (const std::string& text :
       {std::string(), std::string("x"), std::string("dr"), std::string("dddd"),
        std::string("device"), std::string("unix"), std::string("drds"), std::string("my-dsdr"),
        std::string("dsdr-12"), std::string(100000, 'u')}) {
    EXPECT_EQ("", LikenessOf(text)) << text.substr(0, 20);
  }
}

TEST(FindLikeness, TakesTheClosestAndThenTheFirst) {
  EXPECT_EQ("abcdeg", FindLikeness("abcdeh", {"abcdxy", "abcdeg", "abcdek"}));
  EXPECT_EQ("", FindLikeness("abcdeh", {}));
}
