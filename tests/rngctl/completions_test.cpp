#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

// Completes "rngctl read " with the installed file; each word is a line.
Result CompleteInBash() {
  WriteFile(TreePath("bash"), ". " + TreePath("share/bash-completion/completions/rngctl") + R"(
      compopt() { echo "compopt $*"; }
      COMP_WORDS=("$1" read "") COMP_CWORD=2
      _rngctl
      printf '%s\n' "${COMPREPLY[@]}")");
  return RunShell("bash " + TreePath("bash") + " " + Rngctl());
}

Result CompleteInZsh() {
  WriteFile(TreePath("zsh"), R"(
      compdef() { : }
      _arguments() { _rngctl_loaded_first }
      _call_program() { eval "${@:2}" }
      _wanted() { print -l -- ${(P)@[-1]} }
      words=("$1" read "") CURRENT=3
      . )" + TreePath("share/zsh/site-functions/_rngctl"));
  return RunShell("zsh -f " + TreePath("zsh") + " " + Rngctl());
}

}  // namespace

TEST_F(RngctlTest, ShellsOfferTheLoadedKindsFirst) {
  InstallPlugin("sobol", "flagless");
  InstallPlugin("biokbd");
  InstallPlugin("dsdr", "reports_devices");  // the devices must not be completed as kinds
  const std::string kinds =
      "dsdr\nsobol\nbiokbd\nunixdev\n"
      "bioqt\nunixx11\naccord\nJacartaGost\nRutoken\nEsmartGost\ngrandmaster\nbiocore\n";
  EXPECT_THAT(CompleteInBash().output, StartsWith("compopt -o nosort\n" + kinds + "-n\n"));
  EXPECT_EQ(kinds, CompleteInZsh().output);
}

TEST_F(RngctlTest, ShellsOfferAllKindsWhenNoneCanBeListed) {
  InstallPlugin("dsdr", "throwing_start");
  const std::string kinds = "bioqt\nunixx11\ndsdr\naccord\n";
  EXPECT_THAT(CompleteInBash().output, HasSubstr("nosort\n" + kinds));
  EXPECT_THAT(CompleteInZsh().output, HasSubstr(kinds));
}

TEST_F(RngctlTest, ShellsDoNotWaitForAPluginThatHangs) {
  InstallPlugin("dsdr", "breaking/factory_hangs");
  EXPECT_THAT(CompleteInBash().output, HasSubstr("nosort\nbioqt\n"));
}
