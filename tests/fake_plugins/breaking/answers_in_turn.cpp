// Fails no check. The operation that the macro SLOW names takes long, and its calls take turns.

#include "tests/fake_plugins/correct_rng.h"

#include <mutex>
#include <unistd.h>

namespace {

enum Operation { kIsAvailable, kSelectDevice };

class AnswersInTurnRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    Begin(kIsAvailable);
    return true;
  }
  bool SelectDevice(const char* hardwareId) override {
    Begin(kSelectDevice);
    return CorrectRng::SelectDevice(hardwareId);
  }

 private:
  void Begin(Operation operation) {
    if (operation != SLOW) return;
    const std::lock_guard guard(lock);
    ::usleep(600000);
  }

  std::mutex lock;
};

}  // namespace

EXPORT_RNG(AnswersInTurnRng)
