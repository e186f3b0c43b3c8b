#include "helpers/tty/terminal/taken_settings.h"

#include <unistd.h>

namespace {

bool BelongToOthers(int terminal, const TakenSettings& settings) {
  termios now = {};
  return ::tcgetpgrp(terminal) != settings.group &&
         (::tcgetattr(terminal, &now) != 0 || now.c_lflag != settings.now.c_lflag ||
          now.c_iflag != settings.now.c_iflag);
}

}  // namespace

TakenSettings PrepareSettings(int terminal) {
  TakenSettings settings = {true, ::getpgrp(), {}, {}};
  ::tcgetattr(terminal, &settings.before);
  settings.now = settings.before;
  settings.now.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
  settings.now.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | ICRNL | INLCR | IGNCR);
  settings.now.c_cc[VMIN] = 1;
  settings.now.c_cc[VTIME] = 0;
  return settings;
}

void RestoreSettings(int terminal, const TakenSettings& settings) {
  if (!settings.areTaken || BelongToOthers(terminal, settings)) return;
  ::tcflush(terminal, TCIFLUSH);
  // Not TCSADRAIN: it waits for output, which the terminal may have stopped.
  ::tcsetattr(terminal, TCSANOW, &settings.before);
}
