#include "tests/rngctl/installed_tool.h"

#include "tests/support/tree.h"

std::string Rngctl() { return TreePath("bin/rngctl"); }

std::string WithHardware(const std::string& device) {
  const std::string variable = device.empty() ? "-u RNG_TEST_HWRNG" : "RNG_TEST_HWRNG=" + device;
  return "env " + variable + " LD_PRELOAD=" FAKE_LIBS_DIR "/other_hwrng.so ";
}

Result MatchSchema(const std::string& schema, const std::string& report) {
  WriteFile(TreePath("report"), report);
  return RunShell(MATCHES_SCHEMA " " SCHEMA_DIR "/" + schema + " <" + TreePath("report"));
}

void InstalledTool::SetUp() {
  const Result result = RunShell("cp -a --remove-destination " INSTALLATION "/. " + TreePath(""));
  ASSERT_EQ(0, result.status) << result.errors;
}
