// The kind "biokbd": a person who types in the terminal.

#include "plugins/interactive/interactive_rng.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// Fails with ENXIO in a process without a controlling terminal.
int OpenTerminal() { return ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK); }

bool HasTerminal() {
  const int terminal = OpenTerminal();
  if (terminal >= 0) ::close(terminal);
  return terminal >= 0;
}

std::string FindProblem() {
  const int terminal = OpenTerminal();
  if (terminal < 0) {
    return "There is no terminal to type in. Run the program in a terminal, not as a service or a "
           "scheduled job.";
  }
  const bool isForeground = ::tcgetpgrp(terminal) == ::getpgrp();
  ::close(terminal);
  if (isForeground) return "";
  return "The program runs in the background, where it cannot ask for keys. Bring it to the "
         "foreground with fg, or start it without &.";
}

InteractiveRng g_provider;

}  // namespace

const InteractiveKind kKind = {
    "biokbd",         "Keys that the user presses in the terminal, and their times",
    "rng-gather-tty", "rng-plugin-biokb",
    HasTerminal,      FindProblem};

extern "C" IRngProvider* GetBioKbRng() { return &g_provider; }
