// Leaves its handler to a signal.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>

namespace {

class SignalHandlerStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    return ::sigaction(SIGUSR1, &action, nullptr) == 0;
  }
};

}  // namespace

EXPORT_RNG(SignalHandlerStaysRng)
