// Preloaded into rngctl: its child processes wait until their parent has terminated.

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <string>
#include <unistd.h>

static void WaitForEndOfParent() {
  const pid_t parent = ::getppid();
  const std::string mark = std::string(std::getenv("RNG_TEST_TREE")) + "/started";
  const int file = ::open(mark.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (::write(file, "x", 1) != 1) std::abort();
  ::close(file);
  for (int i = 0; i < 3000 && ::getppid() == parent; ++i) ::usleep(10000);
}

__attribute__((constructor)) static void Delay(int count, char** arguments, char**) {
  if (count > 1 && std::strstr(arguments[1], "-child")) WaitForEndOfParent();
  ::pthread_atfork(nullptr, nullptr, WaitForEndOfParent);
}
