#ifndef TESTS_INTERACTIVE_TYPING_ROBOT_H
#define TESTS_INTERACTIVE_TYPING_ROBOT_H

#include "tests/interactive/tty/pseudo_terminal.h"

#include <chrono>
#include <cmath>
#include <random>
#include <thread>

/// Presses changing keys at intervals that are distributed as a person's, but ten times shorter.
class TypingRobot {
 public:
  explicit TypingRobot(PseudoTerminal& where) : terminal(where) {}

  void Press() { PressKey(std::string(1, static_cast<char>('a' + generator() % 26))); }
  void PressKey(const std::string& key) {
    const double interval = 0.018 * std::exp(0.45 * normal(generator));
    std::this_thread::sleep_for(std::chrono::duration<double>(std::max(interval, 0.009)));
    terminal.Press(key);
    ++presses;
  }

  /// Types until the text appears on the screen, or for that many presses.
  bool TypeUntil(const std::string& text, int most = 1000) {
    const std::size_t before = terminal.Screen().size();
    for (int i = 0; i < most; ++i) {
      Press();
      if (terminal.Screen().find(text, before) != std::string::npos) return true;
    }
    return false;
  }

  int Presses() const { return presses; }

 private:
  PseudoTerminal& terminal;
  std::mt19937_64 generator{1};
  std::normal_distribution<double> normal;
  int presses = 0;
};

#endif
