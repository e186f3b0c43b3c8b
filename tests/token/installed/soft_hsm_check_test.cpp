// "rngctl check" on the token plug-in with SoftHSM: what that leaks itself is not the plug-in's.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"
#include "tests/token/installed/soft_hsm.h"

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
  static double GrowthPerUse(const std::string& finding) {
    int uses = 0;
    long from = 0;
    long to = 0;
    const int read =
        std::sscanf(finding.c_str(), "Over %d uses, the heap in use grew steadily from %ld to %ld",
                    &uses, &from, &to);
    EXPECT_EQ(3, read) << finding;
    return static_cast<double>(to - from) / uses;
  }

  // Of the module alone.
  static double GrowthPerUse(int uses) {
    const Result result = RunShell(MODULE_USER " " SOFTHSM_MODULE " " + std::to_string(uses));
    EXPECT_EQ(0, result.status) << result.errors;
    return std::stod(result.output) / uses;
  }

  const SoftHsm hsm;
};

}  // namespace

TEST_F(CheckWithSoftHsm, FindsNothingThatTheModuleAloneDoesNotDo) {
  const Result result = Run("check --json " + TreePath("lib/librngrutoken.so"));
  const json report = json::parse(result.output);
  for (const json& check : report.at("checks")) {
    if (check.at("result") != "failed" && check.at("result") != "warning") continue;
    ASSERT_EQ("load-cycles", check.at("name")) << check;
    EXPECT_LE(GrowthPerUse(check.at("found").get<std::string>()), 1.5 * GrowthPerUse(2000) + 1);
  }
}
