#ifndef TESTS_END_TO_END_INSTALLED_TOOL_H
#define TESTS_END_TO_END_INSTALLED_TOOL_H

#include <gtest/gtest.h>
#include <string>

struct Result {
  int status;
  std::string output;
  std::string errors;
};

Result RunShell(const std::string& command);

std::string Rngctl();

/// The tool as installed, below the tree of the case, with the fakes of the case beside the library.
class InstalledTool : public testing::Test {
 protected:
  void SetUp() override;

  static Result Run(const std::string& arguments) { return RunShell(Rngctl() + " " + arguments); }
};

#endif
