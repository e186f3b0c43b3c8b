#include "helpers/tty/typing.h"

#include "helpers/tty/keys.h"

#include <csignal>
#include <ctime>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr int kLook = 100;  // milliseconds between looks at what sends no message
constexpr int kControlC = 3;
constexpr int kControlD = 4;
constexpr int kControlZ = 26;

std::chrono::nanoseconds Now() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

// As events for the loop. SIGCONT needs no handling of its own: it only wakes.
int BlockSignals() {
  sigset_t handled;
  ::sigemptyset(&handled);
  for (const int number :
       {SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU, SIGPIPE, SIGALRM}) {
    ::sigaddset(&handled, number);
  }
  ::sigprocmask(SIG_SETMASK, &handled, nullptr);
  return ::signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

Typing::Typing(Session& of, Terminal& where, Gathering& into, bool overNetwork)
    : session(of),
      terminal(where),
      gathering(into),
      isRemote(overNetwork),
      signals(BlockSignals()),
      hostRan(Now()) {}

Typing::~Typing() { ::close(signals); }

bool Typing::Run() {
  terminal.TakeKeys();
  Ask();
  while (!isOver && !gathering.IsComplete()) {
    ShowProgress();
    Wait();
  }
  const bool isDone = !isOver;
  if (isDone) SwallowTheRest();
  if (isOver && gathering.HasAlarm()) {
    terminal.ShowLine("The same keys come too often to be random. Nothing was drawn.");
  } else if (isOver) {
    terminal.ShowLine("Cancelled. Nothing was drawn.");
  }
  terminal.Say("");
  terminal.Restore();
  return isDone && !isOver;
}

void Typing::Ask() {
  terminal.Say(
      "Random bytes are needed. Type any keys, without a rhythm, until the bar is full. Ctrl-C "
      "cancels.");
  if (isRemote) {
    terminal.Say(
        "This terminal may be reached over a network, so it takes twice as many keys as usual.");
  }
}

void Typing::ShowProgress(const std::string& more) {
  constexpr int kWidth = 20;
  const int part = gathering.Bits() * kWidth / Gathering::kNeededBits;
  terminal.ShowLine('[' + std::string(static_cast<std::size_t>(part), '#') +
                    std::string(static_cast<std::size_t>(kWidth - part), ' ') + "] " +
                    std::to_string(gathering.Bits() * 100 / Gathering::kNeededBits) + " % " + more);
}

void Typing::Wait() {
  pollfd events[] = {{terminal.Get(), POLLIN, 0},
                     {session.Socket(), POLLIN | POLLRDHUP, 0},
                     {session.Host(), POLLIN, 0},
                     {signals, POLLIN, 0}};
  ::poll(events, std::size(events), kLook);
  if (events[0].revents != 0) HandleKeys(terminal.Read());
  HandleSignals();
  isOver = isOver || session.HasEnded() || IsHostStoppedAlone() || terminal.IsGone() ||
           !terminal.IsForeground();
}

void Typing::HandleKeys(const std::string& bytes) {
  for (const KeyPress& press : SplitKeys(bytes, Now())) {
    gathering.Add(press);
    if (!press.isAlone) continue;
    if (press.key == kControlC || press.key == kControlD) isOver = true;
    if (press.key == kControlZ) ::kill(0, SIGTSTP);  // the whole job, which includes this process
  }
  isOver = isOver || gathering.HasAlarm();
}

void Typing::HandleSignals() {
  signalfd_siginfo signal = {};
  while (::read(signals, &signal, sizeof signal) == sizeof signal) {
    if (signal.ssi_signo == SIGTSTP) {
      Suspend();
    } else if (signal.ssi_signo != SIGTTIN && signal.ssi_signo != SIGTTOU) {
      isOver = true;
    }
  }
}

// A stop of the whole job also stops this process or sends it a signal.
bool Typing::IsHostStoppedAlone() {
  if (!session.IsHostStopped()) hostRan = Now();
  return Now() - hostRan > 1s;
}

// The user's shell gets the terminal as it was. When the host runs again, so does the draw, unless the host
// is in the background then. A host that ignores the signal is not waited for.
void Typing::Suspend() {
  terminal.Say("");
  terminal.Restore();
  const auto sleep = [] { ::poll(nullptr, 0, kLook); };
  for (int look = 0; look < 10 && !session.IsHostStopped(); ++look) sleep();
  while (session.IsHostStopped() && !session.HasEnded()) sleep();
  hostRan = Now();
  if (session.HasEnded() || !terminal.IsForeground()) return;
  terminal.TakeKeys();
  Ask();
}

// What is still being typed must not reach the shell: until half a second of silence, three at most.
void Typing::SwallowTheRest() {
  ShowProgress("Enough, thank you. Please stop typing.");
  const Time start = Now();
  for (Time last = start; !isOver && Now() - last < 500ms && Now() - start < 3s;) {
    const Time before = Now();
    pollfd event = {terminal.Get(), POLLIN, 0};
    if (::poll(&event, 1, kLook) == 1 && !terminal.Read().empty()) last = before;
    isOver = terminal.IsGone();
  }
}
