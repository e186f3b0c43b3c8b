// drawing_host KIND SIZE [DRAWS]: a host that starts the library, takes the generator KIND and draws SIZE bytes,
// in DRAWS threads at once. SIGUSR1 makes another thread cancel. At the end it prints, in one line each:
//
//     ready                    before the draws
//     drawn | zeros | mixed    for each draw: true; false with a zeroed buffer; false with something in it
//     no echo                  if standard input is a terminal that was not as usual right after a single draw
//     descriptors N            how many more are open than before the draws
//     children N               how many children there are, dead or alive: 0 unless waitpid finds one
//     mapped NAME              for each library in the process that only helpers may use

#include "tests/support/open_files.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

int CountChildren() {
  int count = 0;
  while (::waitpid(-1, nullptr, __WALL | WNOHANG) >= 0) ++count;
  return count;
}

void PrintMapped() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    for (const char* const name : {"libX11", "libcairo", "libQt", "libcrypto", "libxcb"}) {
      if (line.find(name) != std::string::npos) std::cout << "mapped " << name << std::endl;
    }
  }
}

bool HasNoEcho() {
  termios settings = {};
  return ::tcgetattr(STDIN_FILENO, &settings) == 0 && (settings.c_lflag & ECHO) == 0;
}

std::string Draw(IRngProvider& rng, std::size_t size) {
  std::vector<unsigned char> bytes(size, 1);
  const bool isDrawn = rng.Generate(bytes.data(), bytes.size());
  const auto zeros = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), 0));
  if (isDrawn) return zeros <= size / 8 ? "drawn" : "drawn with too many zeros";
  return zeros == size ? "zeros" : "mixed";
}

void CancelOnSignal(IRngProvider& rng) {
  sigset_t cancel;
  ::sigemptyset(&cancel);
  ::sigaddset(&cancel, SIGUSR1);
  ::pthread_sigmask(SIG_BLOCK, &cancel, nullptr);
  std::thread([cancel, &rng] {
    for (int number = 0; ::sigwait(&cancel, &number) == 0;) rng.Cancel();
  }).detach();
}

void Run(IRngProvider& rng, std::size_t size, std::size_t draws) {
  CancelOnSignal(rng);
  const std::ptrdiff_t before = CountOpenFiles();
  std::cout << "ready" << std::endl;
  std::vector<std::string> results(draws);
  std::vector<std::thread> threads;
  for (std::string& result : results) {
    threads.emplace_back([&rng, &result, size, draws] {
      result = Draw(rng, size);
      if (draws == 1 && HasNoEcho()) result += "\nno echo";
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) std::cout << result << std::endl;
  std::cout << "descriptors " << CountOpenFiles() - before << '\n'
            << "children " << CountChildren() << std::endl;
  PrintMapped();
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (rng) {
    Run(*rng, std::strtoul(arguments[2], nullptr, 10),
        count > 3 ? std::strtoul(arguments[3], nullptr, 10) : 1);
  } else {
    std::cout << "no " << arguments[1] << std::endl;
  }
  ShutDown();
  ::_exit(0);  // the thread that cancels is still there
}
