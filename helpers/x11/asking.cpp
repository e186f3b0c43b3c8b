#include "helpers/x11/asking.h"

#include "helpers/session/monotonic_clock.h"

#include <algorithm>
#include <poll.h>

using namespace std::chrono_literals;

namespace {

constexpr char kTitle[] = "A program needs random bytes";

Picture FirstPicture(bool isRemote) {
  Picture picture;
  picture.request =
      "A program needs random bytes. Move the mouse around in this window, or press different keys "
      "at irregular intervals, until the bar is full.";
  if (isRemote) {
    picture.remark = "You may be connected over a network, so twice as many keys are needed.";
  }
  picture.progress = "0%";
  picture.ending = "To cancel, press Escape or close the window.";
  return picture;
}

// Presses that arrive together and have the same millisecond of the server come from a program.
bool IsAlone(const UserInput& press, const std::vector<UserInput>& batch) {
  return std::count_if(batch.begin(), batch.end(), [&](const UserInput& other) {
           return other.type == UserInput::kPress && other.serverTime == press.serverTime;
         }) == 1;
}

}  // namespace

Asking::Asking(Gathering& into, bool isRemote)
    : gathering(into), picture(FirstPicture(isRemote)), window(kTitle, picture) {}

bool Asking::Run() {
  while (!gathering.IsComplete() && !gathering.HasAlarm()) {
    Show(gathering.Percent());
    Gather(Wait());
    if (window.TakeRefusal()) return false;
  }
  if (gathering.HasAlarm()) {
    ShowAlarm();
    return false;
  }
  SwallowTheRest();
  return true;
}

void Asking::Show(int percent, const std::string& hint) {
  picture.percent = percent;
  picture.progress = std::to_string(percent) + '%' + hint;
  window.Show(picture);
}

// Xlib may already have read events during another call. The descriptor does not announce those.
std::vector<UserInput> Asking::Wait() {
  pollfd event = {window.Get(), POLLIN, 0};
  ::poll(&event, 1, 100);
  return window.Read();
}

void Asking::Gather(const std::vector<UserInput>& inputs) {
  for (const UserInput& input : inputs) {
    if (input.type == UserInput::kPress) {
      gathering.Add(KeyPress{input.time, input.code, IsAlone(input, inputs)});
    } else {
      gathering.Add(Motion{input.time, input.x, input.y, input.code});
    }
  }
}

void Asking::ShowAlarm() {
  picture.request = "The input is too regular to be random. No random bytes were generated.";
  picture.remark = "";
  picture.ending = "To close the window, press Escape.";
  for (const Time start = MonotonicNow(); MonotonicNow() - start < 5s;) {
    Show(0);
    Wait();
    if (window.TakeRefusal()) return;
  }
}

// Reads keys until half a second without one, for three seconds at most: a user who is still typing must not
// type into another window.
void Asking::SwallowTheRest() {
  const Time start = MonotonicNow();
  for (Time last = start; MonotonicNow() - last < 500ms && MonotonicNow() - start < 3s;) {
    Show(100, ". That is enough. Please stop typing.");
    for (const UserInput& input : Wait()) {
      if (input.type == UserInput::kPress) last = MonotonicNow();
    }
  }
}
