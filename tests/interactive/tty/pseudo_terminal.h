#ifndef TESTS_INTERACTIVE_PSEUDO_TERMINAL_H
#define TESTS_INTERACTIVE_PSEUDO_TERMINAL_H

#include <string>
#include <termios.h>

/// A pseudo-terminal: the test presses its keys and reads its screen.
class PseudoTerminal {
 public:
  PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;
  ~PseudoTerminal() { Close(); }

  const std::string& Path() const { return path; }

  /// As if a user pressed these keys at once.
  void Press(const std::string& keys);

  /// All that has been written so far, as bytes.
  const std::string& Screen();

  /// Whether the text appears on the screen, after the text of the last such call.
  bool Shows(const std::string& text);

  termios Settings() const;

  /// As another program does.
  void Change(const termios& settings) const;

  /// How many bytes of keys no program has read.
  int CountUnreadKeys() const;

  void Resize(unsigned short rows, unsigned short columns);

  /// As if the user closed the window.
  void Close();

 private:
  int master;
  int slave = -1;  // keeps the terminal and its settings when no program has it open
  std::string path;
  std::string screen;
  std::size_t seen = 0;
};

bool operator==(const termios& left, const termios& right);

#endif
