#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <new>

// --- A host that is linked with the library

class LinkedHost : public testing::TestWithParam<const char*> {};

TEST_P(LinkedHost, EndingWhileStartedClosesThePluginsInListOrderWithoutRelease) {
  InstallPlugins({"dsdr", "accord"});
  ::setenv("LD_LIBRARY_PATH", TreePath("lib").c_str(), 1);
  const Result result = RunShell(std::string("'" EXIT_HOST "' ") + GetParam());
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(
      "2\n"
      "accord.closed\n"  // the exit runs the plug-ins' destructors, the youngest first
      "dsdr.closed\n"
      "dlclose librngdsdr.so\n"  // and then the library's
      "dlclose librngaccord.so\n",
      result.output);
}

INSTANTIATE_TEST_SUITE_P(Ended, LinkedHost, testing::Values("return", "exit"),
                         [](const auto& instance) { return std::string(instance.param); });

// --- A host that has opened the library

namespace {

void Tell() {
  std::cerr << "dsdr: " << CallLog("dsdr") << '\n';
  for (const char* file : {"librngdsdr.so", "librngaccord.so"}) {
    std::cerr << file << (IsMapped(file) ? " stays\n" : " is gone\n");
  }
}

}  // namespace

TEST(OpeningHost, EndingWhileStartedClosesThePluginsWithoutRelease) {
  InstallPlugins({"dsdr", "accord"});
  const auto startAndExit = [] {
    std::atexit(Tell);  // before the library is opened, so after it is finished
    const auto* library = new AggregatorLibrary;
    library->Initialize(nullptr);
    std::exit(0);
  };
  EXPECT_EXIT(startAndExit(), testing::ExitedWithCode(0),
              testing::Eq("dsdr: opened factory SetSettings IsAvailable closed\n"
                          "librngdsdr.so is gone\n"
                          "librngaccord.so is gone\n"));
}
