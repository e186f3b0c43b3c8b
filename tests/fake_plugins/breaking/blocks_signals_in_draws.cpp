// Blocks a signal of the thread that draws.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>

namespace {

class BlocksSignalsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    sigset_t mask;
    ::sigemptyset(&mask);
    ::sigaddset(&mask, SIGINT);
    if (size != 0) ::pthread_sigmask(SIG_BLOCK, &mask, nullptr);
    return CorrectRng::Generate(buffer, size);
  }
};

}  // namespace

EXPORT_RNG(BlocksSignalsRng)
