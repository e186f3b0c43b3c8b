#include "tools/rngctl/process/terminal_settings.h"

#include <fcntl.h>
#include <unistd.h>

TerminalSettings::TerminalSettings()
    : terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
  isKnown = IsOurs() && ::tcgetattr(terminal.Get(), &before) == 0;
}

TerminalSettings::~TerminalSettings() {
  termios now = {};
  if (!isKnown || !IsOurs() || ::tcgetattr(terminal.Get(), &now) != 0) return;
  const bool isSame = now.c_iflag == before.c_iflag && now.c_oflag == before.c_oflag &&
                      now.c_cflag == before.c_cflag && now.c_lflag == before.c_lflag;
  if (!isSame) ::tcsetattr(terminal.Get(), TCSANOW, &before);
}

bool TerminalSettings::IsOurs() const {
  return terminal.Get() >= 0 && ::tcgetpgrp(terminal.Get()) == ::getpgrp();
}
