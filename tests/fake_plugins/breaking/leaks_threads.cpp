// Leaves a thread behind in each use. The thread runs only code of the C library, which stays
// loaded, so it does not crash.

#include "tests/fake_plugins/correct_rng.h"

#include <dlfcn.h>
#include <pthread.h>

namespace {

class LeaksThreadsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    pthread_t thread;
    void* const pause = ::dlsym(RTLD_DEFAULT, "pause");
    ::pthread_create(&thread, nullptr, reinterpret_cast<void* (*)(void*)>(pause), nullptr);
  }
};

}  // namespace

EXPORT_RNG(LeaksThreadsRng)
