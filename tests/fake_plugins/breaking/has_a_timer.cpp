// Uses a timer that notifies a thread, and deletes it. The C library keeps its own thread for such timers.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <ctime>

namespace {

class HasATimerRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD;
    event.sigev_notify_function = [](sigval) {};
    return ::timer_create(CLOCK_MONOTONIC, &event, &timer) == 0;
  }
  void Release() override {
    ::timer_delete(timer);
    CorrectRng::Release();
  }

 private:
  timer_t timer = {};
};

}  // namespace

EXPORT_RNG(HasATimerRng)
