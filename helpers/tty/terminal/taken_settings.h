#ifndef HELPERS_TTY_TERMINAL_TAKEN_SETTINGS_H
#define HELPERS_TTY_TERMINAL_TAKEN_SETTINGS_H

#include <sys/types.h>
#include <termios.h>

/// The settings of a terminal while its keys are taken, and those that must come back.
struct TakenSettings {
  bool areTaken;
  pid_t group;  ///< the process group that took them
  termios before;
  termios now;
};

/// The settings for taking keys, which are not set yet: no echo, no lines, no signals from keys, no flow control,
/// so every key arrives at once.
TakenSettings PrepareSettings(int terminal);

/// Brings back the settings, and discards what has been typed and not read. Does nothing if another group has
/// the terminal by now and has changed them: a shell has settings of its own while it reads a line. In the
/// background, SIGTTOU must be blocked.
void RestoreSettings(int terminal, const TakenSettings& settings);

#endif
