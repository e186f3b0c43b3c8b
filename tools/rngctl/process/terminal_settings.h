#ifndef TOOLS_RNGCTL_PROCESS_TERMINAL_SETTINGS_H
#define TOOLS_RNGCTL_PROCESS_TERMINAL_SETTINGS_H

#include "tools/rngctl/process/descriptor.h"

#include <termios.h>

/// Restores the settings of the terminal when it is destroyed: a child may be killed while it asks the
/// user something with echo off. Does nothing without a terminal, or in the background, where the
/// terminal belongs to somebody else.
class TerminalSettings {
 public:
  TerminalSettings();
  TerminalSettings(const TerminalSettings&) = delete;
  TerminalSettings& operator=(const TerminalSettings&) = delete;
  ~TerminalSettings();

 private:
  bool IsOurs() const;

  const Descriptor terminal;
  termios before = {};
  bool isKnown = false;
};

#endif
