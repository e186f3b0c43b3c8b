// Which lines of a settings file were meant to configure the default although the library does not read
// them.

#include "tools/rngctl/doctor/settings/ignored_default.h"

#include "settings/profile_file.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>
#include <ostream>

namespace {

constexpr char kType[] = "RandomNumberGeneratorType";

struct File {
  const char* name;
  std::string text;
  const char* problem;
  const char* fix;
};

void PrintTo(const File& file, std::ostream* out) { *out << file.name; }

class IgnoredDefaultIn : public testing::TestWithParam<File> {};

std::string ReadByLibrary(const std::string& text) {
  char value[512] = {};
  WriteFile(TreePath("rng.ini"), text);
  ReadProfileString("Devices", kType, nullptr, value, sizeof value, TreePath("rng.ini").c_str());
  return value;
}

std::string Utf16(const std::string& text) {
  std::string encoded = "\xFF\xFE";
  for (const char c : text) encoded += {c, '\0'};
  return encoded;
}

std::string BigEndianUtf16(const std::string& text) {
  std::string encoded = "\xFE\xFF";
  for (const char c : text) encoded += {'\0', c};
  return encoded;
}

const std::string kHeader = "[Devices]\n";
const std::string kLine = "RandomNumberGeneratorType=dsdr\n";
const std::string kMark = "\xEF\xBB\xBF";

constexpr char kFixFirst[] = "Edit the file: line 1 must begin with [Devices].";
constexpr char kFixSecond[] = "Edit the file: line 2 must begin with RandomNumberGeneratorType.";
constexpr char kFixCoding[] = "Save the file as UTF-8 without a byte-order mark.";

}  // namespace

TEST_P(IgnoredDefaultIn, IsExplained) {
  const File& file = GetParam();
  ASSERT_EQ("", ReadByLibrary(file.text));
  const IgnoredDefault found = FindIgnoredDefault(file.text, kType, "the file");
  EXPECT_EQ(file.problem, found.problem);
  EXPECT_EQ(file.fix, found.fix);
}

INSTANTIATE_TEST_SUITE_P(
    Of, IgnoredDefaultIn,
    testing::Values(
        File{"ByteOrderMark", kMark + kHeader + kLine,
             "line 1 has a byte-order mark before [Devices]", kFixCoding},
        File{"IndentedSection", "  " + kHeader + kLine, "line 1 has blanks before [Devices]",
             kFixFirst},
        File{"IndentedKey", kHeader + "\t" + kLine,
             "line 2 has blanks before RandomNumberGeneratorType", kFixSecond},
        File{"NoBreakSpaceBeforeKey", kHeader + "\xC2\xA0" + kLine,
             "line 2 has blanks before RandomNumberGeneratorType", kFixSecond},
        File{"OtherNumber", "[Device]\n" + kLine, "line 1 has [Device] instead of [Devices]",
             kFixFirst},
        File{"MisspeltSection", "[Devcies] ; ours\r\n" + kLine,
             "line 1 has [Devcies] instead of [Devices]", kFixFirst},
        File{"BlanksInSection", "[ Devices ]\n" + kLine,
             "line 1 has [ Devices ] instead of [Devices]", kFixFirst},
        File{"UnclosedSection", "[Devices\n" + kLine, "line 1 has [Devices instead of [Devices]",
             kFixFirst},
        File{"MisspeltKey", kHeader + "RandomNumberGenratorType=dsdr\n",
             "line 2 has RandomNumberGenratorType instead of RandomNumberGeneratorType",
             kFixSecond},
        File{"NoSection", kLine, "line 1 is not in the section [Devices]",
             "Edit the file: insert the line [Devices] before it."},
        File{"BeforeSection", kLine + kHeader, "line 1 is not in the section [Devices]",
             "Edit the file: move it below line 2."},
        File{"Colon", kHeader + "RandomNumberGeneratorType: dsdr\n",
             "line 2 has no \"=\" after RandomNumberGeneratorType",
             "Edit the file: line 2 must begin with RandomNumberGeneratorType=."},
        File{"Blank", kHeader + "RandomNumberGeneratorType dsdr\n",
             "line 2 has no \"=\" after RandomNumberGeneratorType",
             "Edit the file: line 2 must begin with RandomNumberGeneratorType=."},
        File{"Tab", kHeader + "RandomNumberGeneratorType\tdsdr\n",
             "line 2 has no \"=\" after RandomNumberGeneratorType",
             "Edit the file: line 2 must begin with RandomNumberGeneratorType=."},
        File{"EqualsAtTheEnd", kHeader + "RandomNumberGeneratorType=dsdr=\n",
             "line 2 ends with \"=\", but the library reads the value after the last one",
             "Edit the file: remove the \"=\" at the end of line 2."},
        File{"LongerKeyBefore", kHeader + "RandomNumberGeneratorTypes\n" + kLine,
             "line 2 also begins with RandomNumberGeneratorType, so line 3 is not read",
             "Edit the file: move line 3 before line 2."},
        File{"Utf16", Utf16(kHeader + kLine), "the file is UTF-16 text", kFixCoding},
        File{"BigEndianUtf16", BigEndianUtf16(kHeader + kLine), "the file is UTF-16 text",
             kFixCoding}),
    [](const auto& instance) { return std::string(instance.param.name); });

// The library reads a default from these, or they configure none, perhaps on purpose.
TEST(IgnoredDefault, CorrectFilesAreNotBlamed) {
  for (const std::string& text :
       std::vector<std::string>{std::string(),
                                kHeader,
                                kHeader + "RandomNumberGeneratorType=\n",
                                kHeader + kLine,
                                kHeader + "RandomNumberGeneratorType=\n" + kLine,
                                kHeader + "RandomNumberGeneratorType\n",
                                kHeader + "#" + kLine,
                                kHeader + "; " + kLine,
                                kHeader + "  # " + kLine,
                                kHeader + "x" + kLine,
                                "#" + kHeader + kLine,
                                "; " + kHeader + kLine,
                                "[OldDevices]\n" + kLine,
                                "[xDevices]\n" + kLine,
                                "[Other]\n" + kLine,
                                kHeader + "[Other]\n  " + kLine,
                                kMark + kHeader,
                                "  " + kHeader,
                                "[Device]\na=b\n",
                                kHeader + "Type=dsdr\n",
                                kHeader + "RandomNumberGeneratorHardwareID=A1\n",
                                kMark + "\n" + kHeader + kLine,
                                "[devices] ; ours\r\nrandomnumbergeneratortype = dsdr\r\n",
                                Utf16(kHeader),
                                std::string("\xFF\xFE"),
                                std::string(5000, '\0'),
                                std::string("[\n]\n=\n==\n:\n \n"),
                                kHeader + std::string("RandomNumberGeneratorType=\0dsdr\n", 32)}) {
    EXPECT_EQ("", FindIgnoredDefault(text, kType, "the file").problem) << text;
  }
}
