#include "helpers/tty/typing.h"

#include "helpers/session/monotonic_clock.h"
#include "helpers/tty/keys.h"

#include <algorithm>
#include <csignal>
#include <poll.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr int kLook = 100;  // milliseconds between checks of what cannot be polled
constexpr int kControlC = 3;
constexpr int kControlD = 4;
constexpr int kControlZ = 26;

void Sleep() { ::poll(nullptr, 0, kLook); }

// A bar as long as the window has room for beside the percentage. Its length does not depend on the percentage.
std::string Bar(int percent, std::size_t columns) {
  constexpr std::size_t kLongest = 20;
  const std::string percentage = std::to_string(percent) + '%';
  const std::size_t others = std::string("[] 100%").size();
  if (columns <= others) return percentage;
  const std::size_t length = std::min(kLongest, columns - others);
  const std::size_t filled = static_cast<std::size_t>(percent) * length / 100;
  return '[' + std::string(filled, '#') + std::string(length - filled, ' ') + "] " + percentage;
}

}  // namespace

Typing::Typing(const Session& of, const Signals& incoming, Terminal& where, Gathering& into,
               bool overNetwork)
    : session(of),
      signals(incoming),
      terminal(where),
      gathering(into),
      isRemote(overNetwork),
      hostRan(MonotonicNow()) {}

bool Typing::Run() {
  Resume();
  while (!isOver && !gathering.IsComplete()) {
    ShowProgress();
    Wait();
  }
  const bool isDone = !isOver;
  if (isDone || gathering.HasAlarm()) SwallowTheRest();
  if (!isDone) SayWhyNot();
  if (isDone) terminal.Say("");
  terminal.LeaveKeys();
  return isDone;
}

void Typing::Ask() {
  terminal.Say("For random bytes, press different keys irregularly. To cancel, press Ctrl-C.");
  if (isRemote) {
    terminal.Say("You may be connected over a network, so twice as many keys are needed.");
  }
}

void Typing::ShowProgress() {
  if (gathering.Percent() == shown) return;
  shown = gathering.Percent();
  terminal.ShowLine(Bar(shown, terminal.Width()));
}

void Typing::Wait() {
  pollfd events[] = {{terminal.Get(), POLLIN, 0},
                     {session.Socket(), POLLIN, 0},
                     {session.Host(), POLLIN, 0},
                     {signals.Get(), POLLIN, 0}};
  ::poll(events, std::size(events), kLook);
  if (events[0].revents != 0) HandleKeys(terminal.Read());
  HandleSignals();
  isOver = isOver || session.HasEnded() || IsHostStoppedAlone() || terminal.IsGone() ||
           !terminal.IsForeground();
}

// Restores the settings before the job stops, because the shell sets its own right afterwards.
void Typing::HandleKeys(const std::string& bytes) {
  for (const KeyPress& press : SplitKeys(bytes, MonotonicNow())) {
    gathering.Add(press);
    if (press.key == kControlC || press.key == kControlD) isOver = true;
    if (press.key == kControlZ) {
      terminal.LeaveKeys();
      ::kill(0, SIGTSTP);  // the whole job, which includes this process
    }
  }
  isOver = isOver || gathering.HasAlarm();
}

void Typing::HandleSignals() {
  bool hasResumed = false;
  while (const int signal = signals.Next()) {
    switch (signal) {
      case SIGTSTP:
        hasResumed = Suspend();
        break;
      case SIGCONT:  // a shell may have changed the settings while this process was stopped
        if (!hasResumed && terminal.IsForeground()) Resume();
        break;
      case SIGTTIN:
      case SIGTTOU:
        break;
      default:
        isOver = true;
    }
  }
}

// If the whole job is stopped, this process is stopped as well or gets a signal, so it does not see this.
bool Typing::IsHostStoppedAlone() {
  if (!session.IsHostStopped()) hostRan = MonotonicNow();
  return MonotonicNow() - hostRan > 1s;
}

// The draw continues when the host does, unless the host is then in the background. If the host ignores the
// signal, the draw continues at once. Returns whether it continues.
bool Typing::Suspend() {
  terminal.LeaveKeys();
  terminal.Say("");
  for (int look = 0; look < 10 && !session.IsHostStopped(); ++look) Sleep();
  while (session.IsHostStopped() && !session.HasEnded()) Sleep();
  if (session.HasEnded() || !terminal.IsForeground()) return false;
  Resume();
  return true;
}

// While the job was stopped, its user may have started another one that asks.
void Typing::Resume() {
  while (!terminal.Reserve()) {
    if (session.HasEnded() || !terminal.IsForeground()) return;
    Sleep();
  }
  terminal.TakeKeys();
  Ask();
  shown = -1;
}

// Reads keys until half a second without one, for three seconds at most: a user who is still typing must not
// type into the shell.
void Typing::SwallowTheRest() {
  const std::string request = "That is enough. Please stop typing.";
  const std::string line = Bar(gathering.Percent(), terminal.Width()) + ". " + request;
  terminal.ShowLine(line.size() <= terminal.Width() ? line : request);
  const Time start = MonotonicNow();
  for (Time last = start; MonotonicNow() - last < 500ms && MonotonicNow() - start < 3s;) {
    pollfd event = {terminal.Get(), POLLIN, 0};
    if (::poll(&event, 1, kLook) == 1 && !terminal.Read().empty()) last = MonotonicNow();
    if (terminal.IsGone()) break;
  }
}

// Nothing is printed while another job has the terminal.
void Typing::SayWhyNot() {
  if (!terminal.IsForeground()) return;
  terminal.ShowLine("");
  terminal.Say(gathering.HasAlarm()
                   ? "The input is too regular to be random. No random bytes were generated."
                   : "Cancelled. No random bytes were generated.");
}
