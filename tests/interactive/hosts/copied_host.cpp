// copied_host KIND SIZE: draws SIZE bytes. A copy of the process, made while the draw begins, has both ends of the
// helper's socket open until the draw has ended. Prints whether the bytes are drawn.

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

pid_t g_copy = -1;

pid_t StartCopy() {
  const pid_t copy = ::fork();
  if (copy != 0) return copy;
  ::signal(SIGHUP, SIG_IGN);  // of the terminal, if the original is killed
  for (;;) ::pause();
}

// Without memory of its own: a gigabyte would take seconds to fill.
void* Reserve(std::size_t size) {
  return ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

}  // namespace

// The plug-in calls this function of the program instead of the system's.
extern "C" [[gnu::visibility("default")]] int socketpair(int domain, int type, int protocol,
                                                         int* ends) noexcept {
  const auto result = static_cast<int>(::syscall(SYS_socketpair, domain, type, protocol, ends));
  if (g_copy < 0) g_copy = StartCopy();
  return result;
}

int main(int count, char** arguments) {
  if (count != 3) return 2;
  Initialize(GetDefaultSettings());
  IRngProvider* const rng = GetRng(arguments[1]);
  if (!rng) return 1;
  const std::size_t size = std::strtoul(arguments[2], nullptr, 10);
  void* const bytes = Reserve(size);
  if (bytes == MAP_FAILED) return 1;
  const bool isDrawn = rng->Generate(bytes, size);
  if (g_copy < 0) return 1;
  std::cout << "drawn " << isDrawn << std::endl;
  ::kill(g_copy, SIGKILL);
  ::waitpid(g_copy, nullptr, 0);
  ShutDown();
}
