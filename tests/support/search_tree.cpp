// For programs that contain the library's own code and so open the fakes by bare name themselves. It
// makes the loader search the tree, as it does for the library. The loader reads LD_LIBRARY_PATH only
// when a process starts, so the program executes itself again.

#include "tests/support/tree.h"

#include <cstdlib>
#include <unistd.h>

__attribute__((constructor)) static void SearchTree(int, char** arguments, char**) {
  if (!std::getenv(kTreeVariable)) return;  // the tree does not exist yet
  const std::string path = TreePath("lib");
  const char* const searched = std::getenv("LD_LIBRARY_PATH");
  if (searched && searched == path) return;
  ::setenv("LD_LIBRARY_PATH", path.c_str(), 1);
  ::execv("/proc/self/exe", arguments);
  std::abort();
}
