// Starts a process that outlives its own, in a session of its own: the program "sleep" of the tree.

#include "tests/fake_plugins/correct_rng.h"

#include <string>
#include <unistd.h>

namespace {

class LeavesProcessRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (::fork() != 0) return true;
    ::setsid();
    for (int descriptor = 0; descriptor < 1024; ++descriptor) ::close(descriptor);
    const std::string program = std::string(std::getenv("RNG_TEST_TREE")) + "/sleep";
    ::execl(program.c_str(), "sleep", "30", nullptr);
    ::_exit(1);
  }
};

}  // namespace

EXPORT_RNG(LeavesProcessRng)
