// Leaves a handler to the end of a thread.

#include "tests/fake_plugins/correct_rng.h"

#include <pthread.h>

namespace {

class ThreadKeyStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    pthread_key_t key;
    if (IsFirstTime() && ::pthread_key_create(&key, Forget) == 0) ::pthread_setspecific(key, this);
    return true;
  }

 private:
  static void Forget(void*) {}
};

}  // namespace

EXPORT_RNG(ThreadKeyStaysRng)
