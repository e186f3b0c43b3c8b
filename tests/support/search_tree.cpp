// For a program that has the library's own code in it and so opens the fakes by their bare names
// itself: it searches the tree, as the library does. The loader reads the variable only at the
// start of a process.

#include "tests/support/tree.h"

#include <cstdlib>
#include <unistd.h>

__attribute__((constructor)) static void SearchTree(int, char** arguments, char**) {
  if (!std::getenv(kTreeVariable)) return;  // the tree is not made yet
  const std::string path = TreePath("lib");
  const char* const searched = std::getenv("LD_LIBRARY_PATH");
  if (searched && searched == path) return;
  ::setenv("LD_LIBRARY_PATH", path.c_str(), 1);
  ::execv("/proc/self/exe", arguments);
  std::abort();
}
