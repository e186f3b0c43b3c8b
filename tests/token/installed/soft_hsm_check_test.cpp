// "rngctl check" on the token plug-in with SoftHSM.

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

  const SoftHsm hsm;
};

}  // namespace

TEST_F(CheckWithSoftHsm, FindsNoFault) {
  const Result result = Run("check --json " + TreePath("lib/librngrutoken.so"));
  EXPECT_EQ(0, result.status) << result.errors;
  const json report = json::parse(result.output);
  EXPECT_LT(40U, report.at("checks").size());
  for (const json& check : report.at("checks")) EXPECT_NE("failed", check.at("result")) << check;
}
