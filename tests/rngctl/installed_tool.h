#ifndef TESTS_RNGCTL_INSTALLED_TOOL_H
#define TESTS_RNGCTL_INSTALLED_TOOL_H

#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <string>

constexpr char kSettingsFile[] = "etc/rng.ini";  ///< of the installation, below the tree

std::string Rngctl();

/// Compares a report with a schema of the tool, such as "check.schema.json"; status 0 if it matches.
Result MatchSchema(const std::string& schema, const std::string& report);

/// The tool as installed, below the tree of the case, with the fakes of the case beside the library.
class InstalledTool : public testing::Test {
 protected:
  void SetUp() override;

  static Result Run(const std::string& arguments) { return RunShell(Rngctl() + " " + arguments); }
};

/// The commands that need no more than that.
class RngctlTest : public InstalledTool {};

#endif
