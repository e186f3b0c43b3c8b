// Its thread is still running when the library is closed.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <thread>

namespace {

std::atomic<unsigned long> g_count;

class ThreadRunsOnRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    std::thread([] {
      for (;;) ++g_count;
    }).detach();
  }
};

}  // namespace

EXPORT_RNG(ThreadRunsOnRng)
