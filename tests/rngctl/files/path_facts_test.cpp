#include "tools/rngctl/files/path_facts.h"

#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

// Opening a file asks for the rights of the effective user, and so must a prediction.
TEST(PathFacts, MayAccessIsAboutTheEffectiveUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
  constexpr uid_t kNobody = 65534;
  WriteFile(TreePath("file"), "");
  std::filesystem::permissions(TreePath(""), std::filesystem::perms(0755));
  std::filesystem::permissions(TreePath("file"), std::filesystem::perms(0600));
  const Result result = RunForked([] {
    if (::setresuid(0, kNobody, 0) != 0) return 2;
    return MayAccess(TreePath("file"), R_OK) || !MayAccess(TreePath(""), R_OK) ? 1 : 0;
  });
  EXPECT_EQ(0, result.status);
}
