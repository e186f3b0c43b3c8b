#include "tools/rngctl/settings/foreign_rights.h"

#include "tests/support/process.h"
#include "tools/rngctl/refusal.h"

#include <functional>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

constexpr unsigned kAnother = 4711;

bool IsRefused() {
  try {
    RefuseForeignRights();
    return false;
  } catch (const Refusal&) {
    return true;
  }
}

// The tool cannot be installed with a set-user-ID bit here: the loader would not find its library.
int RefusalAfter(const std::function<int()>& change) {
  return RunForked([&change] { return change() != 0 ? 99 : static_cast<int>(IsRefused()); }).status;
}

}  // namespace

TEST(ForeignRights, OnesOwnAreNone) { EXPECT_FALSE(IsRefused()); }

TEST(ForeignRights, AnotherEffectiveUserIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  EXPECT_EQ(1, RefusalAfter([] { return ::setresuid(kAnother, 0, 0); }));
  EXPECT_EQ(1, RefusalAfter([] { return ::setresgid(kAnother, 0, 0); }));
  EXPECT_EQ(0, RefusalAfter([] { return ::setresuid(kAnother, kAnother, kAnother); }));
}
