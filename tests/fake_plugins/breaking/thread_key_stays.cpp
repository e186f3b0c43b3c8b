// Leaves a destructor of thread-specific data, which runs when the thread ends. The macro WHERE names the
// operation that registers it.

#include "tests/fake_plugins/correct_rng.h"

#include <pthread.h>

namespace {

enum Operation { kIsAvailable, kGenerate };

class ThreadKeyStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    Begin(kIsAvailable);
    return true;
  }
  bool Generate(void* buffer, std::size_t size) override {
    Begin(kGenerate);
    return CorrectRng::Generate(buffer, size);
  }

 private:
  static void Forget(void*) {}

  void Begin(Operation operation) {
    if (operation != WHERE || (operation == kIsAvailable && !IsFirstTime())) return;
    pthread_key_t key;
    if (::pthread_key_create(&key, Forget) == 0) ::pthread_setspecific(key, this);
  }
};

}  // namespace

EXPORT_RNG(ThreadKeyStaysRng)
