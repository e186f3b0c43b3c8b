#include "helpers/x11/asking.h"

#include "helpers/session/monotonic_clock.h"

#include <algorithm>
#include <poll.h>

using namespace std::chrono_literals;

namespace {

constexpr char kTitle[] = "Random bytes are needed";

Picture FirstPicture(bool isRemote) {
  Picture picture;
  picture.request =
      "Random bytes are needed. Move the mouse around in this window, or press different keys "
      "without a rhythm, until the bar is full.";
  if (isRemote) {
    picture.remark =
        "This display may be reached over a network, so it takes twice as many keys as usual.";
  }
  picture.progress = "0 %";
  picture.ending = "To cancel, press Escape or close the window.";
  return picture;
}

// Presses of one millisecond that arrive at once are a program's.
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
    ShowProgress();
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

void Asking::ShowProgress() {
  picture.percent = gathering.Bits() * 100 / Gathering::kNeededBits;
  picture.progress = std::to_string(picture.percent) + " %";
  window.Show(picture);
}

// Some calls of Xlib read events, which are then not announced by the descriptor.
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
  picture.request = "The input repeats itself too often to be random. Nothing was drawn.";
  picture.remark = "";
  picture.progress = "Cancelled.";
  picture.ending = "To close the window, press Escape.";
  for (const Time start = MonotonicNow(); MonotonicNow() - start < 5s;) {
    window.Show(picture);
    Wait();
    if (window.TakeRefusal()) return;
  }
}

// A key that is still being pressed must not reach another window: until half a second without one, three
// seconds at most.
void Asking::SwallowTheRest() {
  picture.percent = 100;
  picture.progress = "100 %. Enough, thank you.";
  const Time start = MonotonicNow();
  for (Time last = start; MonotonicNow() - last < 500ms && MonotonicNow() - start < 3s;) {
    window.Show(picture);
    for (const UserInput& input : Wait()) {
      if (input.type == UserInput::kPress) last = MonotonicNow();
    }
  }
}
