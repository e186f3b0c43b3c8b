// "rngctl check" on the token plug-in with SoftHSM, whose own leaks are told apart from those of the plug-in.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"
#include "tests/token/installed/soft_hsm.h"

#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

class CheckWithSoftHsm : public InstalledTool {
 protected:
  void SetUp() override {
    InstalledTool::SetUp();
    std::filesystem::copy_file(SOFTHSM_PLUGIN, TreePath("lib/librngrutoken.so"));
    hsm.Add("mine");
  }

  // "Over 2000 uses, the heap in use grew steadily from 483104 to 508720 bytes."
  static long GrowthIn(const std::string& finding) {
    int uses = 0;
    long from = 0;
    long to = 0;
    const int count =
        std::sscanf(finding.c_str(), "Over %d uses, the heap in use grew steadily from %ld to %ld",
                    &uses, &from, &to);
    EXPECT_EQ(3, count) << finding;
    return to - from;
  }

  static long GrowthOfTheModuleAlone() {
    const Result result = RunShell(MODULE_USER " " SOFTHSM_MODULE " 1000");
    EXPECT_EQ(0, result.status) << result.errors;
    return std::stol(result.output);
  }

  const SoftHsm hsm;
};

}  // namespace

// The heap of SoftHSM grows for some thousand uses and then stops. "check" sometimes sees the end of that growth.
TEST_F(CheckWithSoftHsm, FindsNothingThatTheModuleAloneDoesNotDo) {
  const Result result = Run("check --json " + TreePath("lib/librngrutoken.so"));
  const json report = json::parse(result.output);
  EXPECT_LT(40U, report.at("checks").size());
  for (const json& check : report.at("checks")) {
    EXPECT_NE("warning", check.at("result")) << check;
    if (check.at("result") != "failed") continue;
    ASSERT_EQ("load-cycles", check.at("name")) << check;
    EXPECT_LE(GrowthIn(check.at("found").get<std::string>()), 2 * GrowthOfTheModuleAlone());
  }
}
