// Changes the settings of the terminal, as a prompt for a password does, before it is available.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

class UsesTerminalRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    const int terminal = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0) return false;
    termios settings = {};
    const bool isChanged =
        ::tcgetattr(terminal, &settings) == 0 &&
        ::tcsetattr(terminal, TCSANOW, &settings) == 0;  // stops in the background
    ::close(terminal);
    return isChanged;
  }
};

}  // namespace

EXPORT_RNG(UsesTerminalRng)
