// The contract of the plug-ins that ask in a window. Their draws wait for a user, who does not come: they are
// cancelled after a quarter of the time.

#include "tests/support/process.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <gmock/gmock.h>

class WindowContract : public testing::TestWithParam<const char*> {};

TEST_P(WindowContract, IsKept) {
  const XServer server;
  ::setenv("DISPLAY", server.display.c_str(), 1);
  const Result result =
      RunShell(INSTALLATION "/bin/rngctl check --timeout 4 " INSTALLATION "/lib/lib" +
               std::string(GetParam()) + ".so");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              testing::HasSubstr("\n40 checks passed, 0 failed, 0 warnings, 9 not examined"));
}

INSTANTIATE_TEST_SUITE_P(Plugin, WindowContract, testing::Values("rngbiox11", "rngbioqt"),
                         [](const auto& instance) { return std::string(instance.param); });
