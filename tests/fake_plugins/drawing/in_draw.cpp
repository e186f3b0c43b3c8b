// Its second draw does what the macro DO names.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <pthread.h>
#include <string>
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

// Names in the folder of the output, which the case gives it.
[[maybe_unused]] std::string InFolder(const char* name) {
  return std::string(std::getenv("RNG_TEST_FOLDER")) + '/' + name;
}

[[maybe_unused]] void PlaceLink() { ::symlink("elsewhere", InFolder("key").c_str()); }

[[maybe_unused]] void GiveAway() {
  std::fclose(std::fopen(InFolder("key").c_str(), "w"));
  ::chown(InFolder("key").c_str(), 4711, 4711);
}

[[maybe_unused]] void MoveAndExit() {
  const std::filesystem::directory_iterator files(InFolder(""));
  std::filesystem::rename(files->path(), InFolder("moved"));
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
