// copied_host KIND SIZE: draws SIZE bytes, and forks all the time while the draw begins. The copies live until
// the draw has ended. Prints "copied" when no more are made, and then whether the bytes are drawn.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

constexpr int kCopies = 100;

pid_t StartCopy() {
  const pid_t copy = ::fork();
  if (copy != 0) return copy;
  ::signal(SIGHUP, SIG_IGN);  // of the terminal, if the original is killed
  for (;;) ::pause();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (!rng) return 1;
  std::vector<unsigned char> bytes(std::strtoul(arguments[2], nullptr, 10));
  std::atomic<bool> hasBegun = false;
  bool isDrawn = false;
  std::thread draw([&] {
    hasBegun = true;
    isDrawn = rng->Generate(bytes.data(), bytes.size());
  });
  while (!hasBegun) std::this_thread::yield();
  std::vector<pid_t> copies;
  for (int i = 0; i < kCopies; ++i) copies.push_back(StartCopy());
  std::cout << "copied" << std::endl;
  draw.join();
  std::cout << "drawn " << isDrawn << std::endl;
  for (const pid_t copy : copies) {
    ::kill(copy, SIGKILL);
    ::waitpid(copy, nullptr, 0);
  }
  ShutDown();
}
