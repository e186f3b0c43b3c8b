#include "tests/abi/installed_host.h"

#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

void InstallHost(const std::string& host) {
  fs::create_directories(TreePath("bin"));
  fs::copy_file(fs::path(HOSTS_DIR) / host, TreePath("bin/" + host),
                fs::copy_options::skip_existing);
  if (!fs::is_symlink(TreePath("lib/librngaggregator.so.1"))) {
    fs::create_symlink("librngaggregator.so", TreePath("lib/librngaggregator.so.1"));
  }
}

}  // namespace

std::string RunInstalledHost(const std::string& host, const std::string& searchPath) {
  InstallHost(host);
  std::string command = "'" + TreePath("bin/" + host) + "'";
  if (!searchPath.empty()) command = "LD_LIBRARY_PATH='" + searchPath + "' " + command;
  const Result result = RunShell(command);
  EXPECT_EQ(0, result.status) << host << ": " << result.errors;
  return result.output;
}
