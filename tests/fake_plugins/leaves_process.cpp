// Starts a process that outlives its own, in a session of its own: the program "sleep" of the tree.

#include "tests/fake_plugins/correct_rng.h"

#include <spawn.h>
#include <string>
#include <unistd.h>

namespace {

class LeavesProcessRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    std::string program = std::string(std::getenv("RNG_TEST_TREE")) + "/sleep";
    std::string name = "sleep";
    std::string seconds = "30";
    char* const arguments[] = {name.data(), seconds.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, 0);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    const bool isStarted =
        ::posix_spawn(nullptr, program.c_str(), &actions, &attributes, arguments, environ) == 0;
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return isStarted;
  }
};

}  // namespace

EXPORT_RNG(LeavesProcessRng)

#ifdef REPORTS
std::int32_t GetRngReport(char*) { return 0; }
#endif
