// Runs the tests in a child process that has a folder tree of its own, laid out as an installation.
// The child is a fresh process, because the dynamic loader reads its search path only at the start.

#include "tests/support/tree.h"

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

int RunInTree(char** arguments, const fs::path& tree) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv(kTreeVariable, tree.c_str(), 1);
    ::unsetenv("DISPLAY");
#ifdef SANITIZED
    // The sanitizer replaces dlopen, so the loader does not see who calls it and ignores the run path.
    ::setenv("LD_LIBRARY_PATH", (tree / "lib").c_str(), 1);
#endif
    ::execv("/proc/self/exe", arguments);
    std::abort();
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  std::cerr << "the test ended with signal " << WTERMSIG(status) << '\n';
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (!std::getenv(kTreeVariable)) {
    std::string name = fs::temp_directory_path() / "rng-test-XXXXXX";
    if (!::mkdtemp(name.data())) return 1;
    fs::create_directory(fs::path(name) / "lib");
    const int status = RunInTree(arguments, name);
    fs::remove_all(name);
    return status;
  }
  testing::InitGoogleMock(&count, arguments);
  LayOutTree();
  return RUN_ALL_TESTS();
}
