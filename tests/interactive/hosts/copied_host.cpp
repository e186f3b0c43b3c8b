// copied_host KIND SIZE: draws SIZE bytes, and forks all the time while the draw begins. The copies live until
// the draw has ended. Prints "copied" when no more are made, and then whether the bytes are drawn.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

constexpr int kCopies = 100;
constexpr std::size_t kFilled = 100'000'000;

// Only the beginning is filled. Each fork copies the page table of that, so it takes some milliseconds, and other
// copies are made while the plug-in forks. For all of a gigabyte, a hundred forks would take many seconds.
unsigned char* Reserve(std::size_t size) {
  void* const memory =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  return static_cast<unsigned char*>(std::memset(memory, 0, std::min(size, kFilled)));
}

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
  const std::size_t size = std::strtoul(arguments[2], nullptr, 10);
  unsigned char* const bytes = Reserve(size);
  if (!bytes) return 1;
  std::atomic<bool> hasBegun = false;
  bool isDrawn = false;
  std::thread draw([&] {
    hasBegun = true;
    isDrawn = rng->Generate(bytes, size);
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
