#ifndef TESTS_FAKE_PLUGINS_WAITING_RNG_H
#define TESTS_FAKE_PLUGINS_WAITING_RNG_H

#include "tests/fake_plugins/correct_rng.h"

#include <condition_variable>
#include <mutex>

/// A provider whose draws wait for a user, who never comes, until they are cancelled.
class WaitingRng : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    std::unique_lock guard(lock);
    const int before = cancellations;
    isCancelled.wait(guard, [this, before] { return cancellations != before; });
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override {
    const std::lock_guard guard(lock);
    ++cancellations;
    isCancelled.notify_all();
  }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }

 private:
  std::mutex lock;
  std::condition_variable isCancelled;
  int cancellations = 0;
};

#endif
