#ifndef TESTS_RNGCTL_INSTALLED_TOOL_H
#define TESTS_RNGCTL_INSTALLED_TOOL_H

#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <string>

constexpr char kSettingsFile[] = "etc/rng.ini";  ///< of the installation, relative to the tree

std::string Rngctl();

/// Put before a command: /dev/hwrng is that file, "refused" to this user, or missing if `device` is empty.
std::string WithHardware(const std::string& device);

/// Validates a report against a schema of the tool, such as "check.schema.json"; status 0 if it is
/// valid.
Result MatchSchema(const std::string& schema, const std::string& report);

/// The installed tool, in the tree of the case, with the case's fakes beside the library.
class InstalledTool : public testing::Test {
 protected:
  void SetUp() override;

  static Result Run(const std::string& arguments) { return RunShell(Rngctl() + " " + arguments); }
};

/// For the commands that need nothing else.
class RngctlTest : public InstalledTool {};

#endif
