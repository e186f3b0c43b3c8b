// Breaks nothing; a draw asks the user for a key on the terminal, without echo, until it is cancelled.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The terminal while the user is asked.
class Prompt {
 public:
  Prompt() : terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (terminal < 0 || ::tcgetattr(terminal, &before) != 0) return;
    termios settings = before;
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
    isOpen = ::tcsetattr(terminal, TCSADRAIN, &settings) == 0 &&
             ::write(terminal, "Press a key: ", 13) == 13;
  }
  Prompt(const Prompt&) = delete;
  Prompt& operator=(const Prompt&) = delete;
  ~Prompt() {
    if (isOpen) ::tcsetattr(terminal, TCSADRAIN, &before);
    if (terminal >= 0) ::close(terminal);
  }

  bool IsOpen() const { return isOpen; }
  bool HasKey() const {
    pollfd key = {terminal, POLLIN, 0};
    char byte = 0;
    return ::poll(&key, 1, 10) == 1 && ::read(terminal, &byte, 1) == 1;
  }

 private:
  const int terminal;
  termios before = {};
  bool isOpen = false;
};

class PromptsOnTerminalRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    const int begin = cancellations;
    const std::lock_guard guard(lock);
    const Prompt prompt;
    while (prompt.IsOpen() && cancellations == begin) {
      if (prompt.HasKey()) return CorrectRng::Generate(buffer, size);
    }
    std::memset(buffer, 0, size);
    return false;
  }
  void Cancel() override { ++cancellations; }
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser; }

 private:
  std::mutex lock;  // one question at a time
  std::atomic<int> cancellations = 0;
};

}  // namespace

EXPORT_RNG(PromptsOnTerminalRng)
