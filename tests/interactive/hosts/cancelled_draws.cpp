// cancelled_draws KIND COUNT: makes that many draws, cancels each a moment after it has begun, and prints
// what is left of them, as drawing_host does.

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <random>
#include <sys/wait.h>
#include <thread>

#include <rngaggregator/aggregator.h>

namespace {

std::ptrdiff_t CountDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (!rng) return 1;
  const std::ptrdiff_t before = CountDescriptors();
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
  std::cout << "drawn " << drawn << "\ndescriptors " << CountDescriptors() - before << "\nchildren "
            << (::waitpid(-1, nullptr, __WALL | WNOHANG) >= 0 || errno != ECHILD) << std::endl;
  ShutDown();
}
