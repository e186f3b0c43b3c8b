// Leaves a thread behind. It runs the C library's code alone: with the plug-in's own it would crash in
// whichever check closes the plug-in first.

#include "tests/fake_plugins/correct_rng.h"

#include <dlfcn.h>
#include <pthread.h>

namespace {

class ThreadStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    if (IsFirstTime()) StartThread();
    return true;
  }

 private:
  static void StartThread() {
    pthread_t thread;
    void* const pause = ::dlsym(RTLD_DEFAULT, "pause");
    ::pthread_create(&thread, nullptr, reinterpret_cast<void* (*)(void*)>(pause), nullptr);
  }
};

}  // namespace

EXPORT_RNG(ThreadStaysRng)
