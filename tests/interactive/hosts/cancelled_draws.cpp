// cancelled_draws KIND COUNT: makes that many draws, cancels each a moment after it has begun, and prints
// what is left of them, as drawing_host does.

#include "tests/support/open_files.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <sys/wait.h>
#include <thread>

#include <rngaggregator/aggregator.h>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (!rng) return 1;
  const std::ptrdiff_t before = CountOpenFiles();
  std::mt19937 random(1);
  int drawn = 0;
  for (int i = 0; i < std::atoi(arguments[2]); ++i) {
    std::atomic<bool> hasEnded = false;
    std::thread draw([&] {
      unsigned char bytes[32];
      drawn += rng->Generate(bytes, sizeof bytes);
      hasEnded = true;
    });
    // Some are cancelled while the helper starts, some while it asks. A Cancel before the draw has no effect.
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));
    while (!hasEnded) {
      rng->Cancel();
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    draw.join();
  }
  std::cout << "drawn " << drawn << "\ndescriptors " << CountOpenFiles() - before << "\nchildren "
            << (::waitpid(-1, nullptr, __WALL | WNOHANG) >= 0 || errno != ECHILD) << std::endl;
  ShutDown();
}
