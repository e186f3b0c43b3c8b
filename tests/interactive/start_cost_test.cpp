// What the plug-ins that ask a user cost each host that starts the library.

#include "tests/costs/traced_child.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>

namespace fs = std::filesystem;

namespace {

// The connection with the X server takes a few calls more or less.
constexpr std::size_t kNoise = 20;

// The system calls of a start with what is in lib/, where three plug-ins must be usable.
std::size_t CountCallsOfStart() {
  ::setenv("LD_LIBRARY_PATH", TreePath("lib").c_str(), 1);
  EXPECT_EQ("3\n", RunShell(START_HOST).output);
  return TraceMarkedCalls({START_HOST}).size();
}

}  // namespace

// A trivial plug-in makes no system call when it is asked whether it is available. These look for their helper, and
// for the terminal or the display.
TEST(StartCost, IsThatOfTrivialPluginsAndAFewCalls) {
  const XServer server;
  ::setenv("DISPLAY", server.display.c_str(), 1);
  fs::copy(INSTALLATION, TreePath(""),
           fs::copy_options::recursive | fs::copy_options::copy_symlinks |
               fs::copy_options::overwrite_existing);
  fs::remove(TreePath("lib/libX11.so.6"));  // the fake one: that of this machine is found then
  for (const char* const kind : {"bioqt", "unixx11", "unixdev"}) InstallPlugin(kind, "stub");
  const std::size_t trivial = CountCallsOfStart();
  for (const char* const kind : {"bioqt", "unixx11"}) {
    const std::string file = "lib/" + LibraryFileOf(kind);
    fs::remove(TreePath(file));
    fs::copy(INSTALLATION "/" + file, TreePath(file));
  }
  const std::size_t real = CountCallsOfStart();
  std::cout << trivial << " calls with trivial plug-ins, " << real << " with real ones\n";
  EXPECT_LE(real, trivial + 2 * 6 + kNoise);
}
