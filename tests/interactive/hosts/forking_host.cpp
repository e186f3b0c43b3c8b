// forking_host KIND: forks while one of its threads draws. The copy cancels, tests itself, cancels draws of its
// own and waits; then the original cancels its draw.

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

void Sleep() { std::this_thread::sleep_for(std::chrono::milliseconds(200)); }

// From the first moment of a draw on, while its program is still being started.
bool DrawAndCancel(IRngProvider& rng) {
  std::atomic<bool> draws = true;
  bool isDrawn = false;
  std::thread draw([&] {
    unsigned char bytes[32];
    isDrawn = rng.Generate(bytes, sizeof bytes);
    draws = false;
  });
  while (draws) rng.Cancel();
  draw.join();
  return isDrawn;
}

pid_t StartCopy(IRngProvider& rng, int done) {
  const pid_t copy = ::fork();
  if (copy != 0) return copy;
  rng.Cancel();
  std::cout << "copy: cancels" << std::endl;
  std::cout << "copy: self-test " << rng.SelfTest() << std::endl;
  int drawn = 0;
  for (int i = 0; i < 20; ++i) drawn += DrawAndCancel(rng);
  std::cout << "copy: drawn " << drawn << std::endl;
  ::close(done);
  for (;;) ::pause();
}

void WaitForCopy(int done) {
  char byte;
  while (::read(done, &byte, 1) > 0) continue;
}

}  // namespace

int main(int, char** arguments) {
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (!rng) return 1;
  std::atomic<bool> draws = true;
  bool isDrawn = false;
  std::thread draw([&] {
    unsigned char bytes[32];
    isDrawn = rng->Generate(bytes, sizeof bytes);
    draws = false;
  });
  Sleep();
  int ends[2];
  if (::pipe(ends) != 0) return 1;
  const pid_t copy = StartCopy(*rng, ends[1]);
  ::close(ends[1]);
  WaitForCopy(ends[0]);
  Sleep();
  std::cout << "original: still draws " << draws << std::endl;
  rng->Cancel();
  draw.join();
  std::cout << "original: drawn " << isDrawn << std::endl;
  std::cout << "original: copy lives " << (::waitpid(copy, nullptr, WNOHANG) == 0) << std::endl;
  ::kill(copy, SIGKILL);
  ::waitpid(copy, nullptr, 0);
  ShutDown();
}
