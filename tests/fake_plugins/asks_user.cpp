// Asks the user something when it draws, without a line break, and goes on asking.

#include "tests/fake_plugins/waiting_rng.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

class AsksUserRng final : public WaitingRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    std::fputs("Press the button: ", stderr);
    std::atomic<bool> isOver = false;
    std::thread asking([&isOver] {
      for (int i = 0; !isOver; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (i % 12 == 11) std::fputs("\nPress it now: ", stderr);
      }
    });
    const bool isDrawn = WaitingRng::Generate(buffer, size);
    isOver = true;
    asking.join();
    return isDrawn;
  }
};

}  // namespace

EXPORT_RNG(AsksUserRng)
