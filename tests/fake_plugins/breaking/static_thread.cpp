// Its thread is a static object, which the end of a process destroys while it runs.

#include "tests/fake_plugins/correct_rng.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

class StaticThreadRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    isOver = false;
    thread = std::thread([this] { WaitForTheEnd(); });
  }
  void Release() override {
    {
      const std::lock_guard guard(lock);
      isOver = true;
    }
    hasChanged.notify_all();
    thread.join();
  }

 private:
  void WaitForTheEnd() {
    std::unique_lock guard(lock);
    hasChanged.wait(guard, [this] { return isOver; });
  }

  std::mutex lock;
  std::condition_variable hasChanged;
  bool isOver = false;
  std::thread thread;
};

}  // namespace

EXPORT_RNG(StaticThreadRng)
