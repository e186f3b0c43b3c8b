#include "tests/rngctl/installed_tool.h"

#include "tests/support/tree.h"

std::string Rngctl() { return TreePath("bin/rngctl"); }

Result MatchSchema(const std::string& schema, const std::string& report) {
  WriteFile(TreePath("report"), report);
  return RunShell(MATCHES_SCHEMA " " SCHEMA_DIR "/" + schema + " <" + TreePath("report"));
}

void InstalledTool::SetUp() {
  const Result result = RunShell("cp -a --remove-destination " INSTALLATION "/. " + TreePath(""));
  ASSERT_EQ(0, result.status) << result.errors;
}
