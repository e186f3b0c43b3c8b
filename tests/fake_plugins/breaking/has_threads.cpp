// Breaks nothing; as many threads as RNG_FAKE_THREADS says allocate memory, and Release joins them.

#include "tests/fake_plugins/correct_rng.h"

#include <memory>
#include <thread>
#include <vector>

namespace {

class HasThreadsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    const char* const number = std::getenv("RNG_FAKE_THREADS");
    for (int left = number ? std::atoi(number) : 4; left > 0; --left) threads.emplace_back(Work);
  }
  void Release() override {
    for (std::thread& thread : threads) thread.join();
    delete this;
  }

 private:
  static void Work() {
    for (std::size_t size = 100; size < 100000; size *= 10) {
      const auto memory = std::make_unique<char[]>(size);
      ::getrandom(memory.get(), 1, 0);
    }
  }

  std::vector<std::thread> threads;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  return new HasThreadsRng;
}
