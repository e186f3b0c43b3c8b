// Writes to sockets that are not its own, among them the one by which rngctl's children report. Does not if the
// library UNLESS_LOADED, a macro, is in the process.

#include "tests/fake_plugins/correct_rng.h"

#include <dlfcn.h>
#include <sys/socket.h>

#ifndef UNLESS_LOADED
#define UNLESS_LOADED "none"
#endif

namespace {

class GarblesMessagesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (::dlopen(UNLESS_LOADED, RTLD_LAZY | RTLD_NOLOAD)) return CorrectRng::GetName(buffer);
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
      ::send(descriptor, "not a message", 13, MSG_NOSIGNAL);
    }
    return CorrectRng::GetName(buffer);
  }
};

}  // namespace

EXPORT_RNG(GarblesMessagesRng)
