#ifndef HELPERS_TTY_TERMINAL_TAKEN_SETTINGS_H
#define HELPERS_TTY_TERMINAL_TAKEN_SETTINGS_H

#include <sys/types.h>
#include <termios.h>

/// The settings of a terminal while keys are taken from it, and those to restore.
struct TakenSettings {
  bool areTaken;
  pid_t group;  ///< the process group that took them
  termios before;
  termios now;
};

/// Returns the settings for taking keys, without applying them: no echo, no line editing, no signals from keys and no
/// flow control, so every key arrives at once.
TakenSettings PrepareSettings(int terminal);

/// Restores the settings, and discards what has been typed and not read. Does nothing if another process group has
/// the terminal by now and has changed them: a shell has its own settings while it reads a line. In the background,
/// SIGTTOU must be blocked.
void RestoreSettings(int terminal, const TakenSettings& settings);

#endif
