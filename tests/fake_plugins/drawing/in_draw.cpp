// Its second draw does what the macro DO names.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

[[maybe_unused]] void Exit() { std::exit(0); }

[[maybe_unused]] void ExitAtOnce() { ::_exit(0); }

[[maybe_unused]] void Crash() { std::raise(SIGSEGV); }

[[maybe_unused]] void KillItself() { std::raise(SIGKILL); }

[[maybe_unused]] void EndThread() { ::pthread_exit(nullptr); }

[[maybe_unused]] void Wait() { ::pause(); }

[[maybe_unused]] void HideTyping() {
  termios settings = {};
  ::tcgetattr(STDIN_FILENO, &settings);
  settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  ::tcsetattr(STDIN_FILENO, TCSANOW, &settings);
  std::fputs("hidden\n", stderr);
  ::pause();
}

[[maybe_unused]] void CloseAll() {
  for (int number = 0; number < 64; ++number) ::close(number);
}

[[maybe_unused]] void ExitWithChild() {
  if (::fork() == 0) {
    ::sleep(2);  // with all that it has inherited
    ::_exit(0);
  }
  std::exit(0);
}

// A helper process that does not get as far as running its program.
[[maybe_unused]] void LoseHelper() {
  const pid_t helper = ::fork();
  if (helper == 0) {
    std::raise(SIGTERM);
    ::_exit(0);
  }
  ::waitpid(helper, nullptr, 0);
}

[[maybe_unused]] void Print() {
  std::puts("a message");
  std::fflush(stdout);
}

[[maybe_unused]] void BeSlow() { ::usleep(1'200'000); }

// What the reader of the drawn bytes gets when a draw has succeeded.
[[maybe_unused]] void ForgeTheEnd() {
  for (int number = 3; number < 64; ++number) ::send(number, "e\0", 2, MSG_NOSIGNAL);
  ::_exit(0);
}

[[maybe_unused]] void TellOfSignals() {
  std::signal(SIGTERM, [](int) {
    ::write(STDERR_FILENO, "terminated\n", 11);
    ::_exit(0);
  });
  ::write(STDERR_FILENO, "waiting\n", 8);
  ::pause();
}

[[maybe_unused]] void IgnoreSignals() {
  std::signal(SIGTERM, SIG_IGN);
  ::write(STDERR_FILENO, "waiting\n", 8);
  for (;;) ::pause();
}

// The folder of the output, which the case gives it.
[[maybe_unused]] int OpenFolder() {
  return ::open(std::getenv("RNG_TEST_FOLDER"), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

[[maybe_unused]] void PlaceLink() { ::symlinkat("elsewhere", OpenFolder(), "key"); }

[[maybe_unused]] void GiveAway() {
  const int folder = OpenFolder();
  ::close(::openat(folder, "key", O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  ::fchownat(folder, "key", 4711, 4711, 0);
}

// The only file there, whatever its name.
[[maybe_unused]] void MoveAndExit() {
  const int folder = OpenFolder();
  DIR* const entries = ::fdopendir(folder);
  while (const dirent* const entry = ::readdir(entries)) {
    if (entry->d_type == DT_REG) ::renameat(folder, entry->d_name, folder, "moved");
  }
  std::exit(0);
}

class InDrawRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (++draws == 2) DO();
    return CorrectRng::Generate(buffer, size);
  }

 private:
  int draws = 0;
};

}  // namespace

EXPORT_RNG(InDrawRng)
