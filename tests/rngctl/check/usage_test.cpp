#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

class CheckWrongUsage : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(CheckWrongUsage, IsRefusedWithASentence) {
  WriteFile(TreePath("text.so"), "not a library\n");
  WriteFile(TreePath("empty.so"), "");
  fs::copy_file(Breaking("correct"), TreePath("other.so"));
  RunShell("printf '\\267' | dd of=" + TreePath("other.so") + " bs=1 seek=18 conv=notrunc");
  WriteFile(TreePath("torn.so"), ReadFile(Breaking("correct")).substr(0, 512));
  const auto& [arguments, sentence] = GetParam();
  const Result result = RunShell("cd " + TreePath("") + " && " RNGCTL " check " + arguments);
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, AllOf(StartsWith("rngctl: "), HasSubstr(sentence)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, CheckWrongUsage,
    testing::Values(std::pair("", "PLUGIN is required"),
                    std::pair("nothere.so", "Cannot read \"nothere.so\": No such file"),
                    std::pair("lib", "\"lib\" is a directory."),
                    std::pair("text.so", "\"text.so\" is not a shared library."),
                    std::pair("empty.so", "\"empty.so\" is not a shared library."),
                    std::pair("torn.so", "\"torn.so\" is not a shared library."),
                    std::pair("/dev/stdin <other.so", "\"/dev/stdin\" is standard input."),
                    std::pair("/dev/fd/0 <other.so", "\"/dev/fd/0\" is standard input."),
                    std::pair("/proc/self/fd/0 <other.so", "is standard input. Name the file"),
                    std::pair("other.so", "is not a shared library for this machine (x86-64)."),
                    std::pair(RNGCTL, "is a program, not a shared library."),
                    std::pair("text.so --timeout 0", "--timeout"),
                    std::pair("text.so --timeout x", "--timeout"),
                    std::pair("text.so more", "more")));
