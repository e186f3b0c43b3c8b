#include "tests/interactive/tty/pseudo_terminal.h"

#include "tests/interactive/host_process.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <tuple>
#include <unistd.h>

PseudoTerminal::PseudoTerminal()
    : master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
  char name[64];
  if (::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
      ::ptsname_r(master, name, sizeof name) != 0) {
    throw std::runtime_error("no pseudo-terminal");
  }
  path = name;
  slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  Resize(24, 80);
}

void PseudoTerminal::Press(const std::string& keys) {
  if (::write(master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

const std::string& PseudoTerminal::Screen() {
  char part[4096];
  ssize_t count = 0;
  while ((count = ::read(master, part, sizeof part)) > 0) {
    screen.append(part, static_cast<std::size_t>(count));
  }
  return screen;
}

bool PseudoTerminal::Shows(const std::string& text) {
  return WaitUntil([&] {
    const std::size_t place = Screen().find(text, seen);
    if (place == std::string::npos) return false;
    seen = place + text.size();
    return true;
  });
}

termios PseudoTerminal::Settings() const {
  termios settings = {};
  ::tcgetattr(slave, &settings);
  return settings;
}

void PseudoTerminal::Change(const termios& settings) const {
  ::tcsetattr(slave, TCSANOW, &settings);
}

// In canonical mode, only whole lines would count.
int PseudoTerminal::CountUnreadKeys() const {
  termios settings = Settings();
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON);
  ::tcsetattr(slave, TCSANOW, &settings);
  int count = -1;
  ::ioctl(slave, FIONREAD, &count);
  return count;
}

void PseudoTerminal::Resize(unsigned short rows, unsigned short columns) {
  const winsize size = {rows, columns, 0, 0};
  ::ioctl(master, TIOCSWINSZ, &size);
}

void PseudoTerminal::Close() {
  ::close(slave);
  ::close(master);
  slave = master = -1;
}

bool operator==(const termios& left, const termios& right) {
  return std::tie(left.c_iflag, left.c_oflag, left.c_cflag, left.c_lflag) ==
             std::tie(right.c_iflag, right.c_oflag, right.c_cflag, right.c_lflag) &&
         std::memcmp(left.c_cc, right.c_cc, sizeof left.c_cc) == 0;
}
