#ifndef HELPERS_X11_ASKING_H
#define HELPERS_X11_ASKING_H

#include "helpers/gathering/gathering.h"
#include "helpers/x11/window.h"

/// Asks the user, in a window, to move the mouse or to type until a gathering is complete.
class Asking {
 public:
  /// `into`: the gathering to complete. `isRemote`: the user may be connected over a network.
  Asking(Gathering& into, bool isRemote);
  Asking(const Asking&) = delete;
  Asking& operator=(const Asking&) = delete;

  /// Returns true when there is enough, and false if the user cancels or the input raises an alarm.
  bool Run();

 private:
  using Time = std::chrono::nanoseconds;

  void Show(int percent, const std::string& hint = "");
  std::vector<UserInput> Wait();
  void Gather(const std::vector<UserInput>& inputs);
  void ShowAlarm();
  void SwallowTheRest();

  Gathering& gathering;
  Picture picture;
  UserWindow window;
};

#endif
