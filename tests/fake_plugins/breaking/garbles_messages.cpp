// Writes to sockets that are not its own, among them the one by which rngctl's children report.

#include "tests/fake_plugins/correct_rng.h"

#include <sys/socket.h>

namespace {

class GarblesMessagesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
      ::send(descriptor, "not a message", 13, MSG_NOSIGNAL);
    }
    return CorrectRng::GetName(buffer);
  }
};

}  // namespace

EXPORT_RNG(GarblesMessagesRng)
