// rng-gather-tty: gathers entropy from the keys that a user presses in the terminal, for the kind "biokbd".
// rng-gather-tty --record FILE: stores the events instead, for an assessment of their entropy.

#include "helpers/session/run_helper.h"
#include "helpers/tty/network.h"
#include "helpers/tty/record.h"
#include "helpers/tty/terminal/terminal.h"
#include "helpers/tty/typing.h"

#include <csignal>
#include <poll.h>
#include <string>

namespace {

// Waits while another helper takes keys from this terminal. A stop of the job is no reason to end.
bool WaitForTerminal(Terminal& terminal, const Session& session, const Signals& signals) {
  constexpr int kLook = 100;  // milliseconds
  while (!terminal.Reserve()) {
    const int signal = signals.Next();
    const bool endsProcess = signal == SIGTERM || signal == SIGHUP || signal == SIGINT;
    if (endsProcess || session.HasEnded()) return false;
    ::poll(nullptr, 0, kLook);
  }
  return !session.HasEnded();
}

void Draw(const Session& session) {
  const Signals signals;
  Terminal terminal;
  if (!WaitForTerminal(terminal, session, signals)) return;
  if (!terminal.IsForeground()) {
    return terminal.Say(
        "A background program cannot ask for random bytes. Run it in the foreground.");
  }
  terminal.StartGuard(session.Socket());
  const bool isRemote = MayBeRemote(terminal.Name());
  Gathering gathering(DrawSystemBytes(), isRemote);
  const bool isDone = Typing(session, signals, terminal, gathering, isRemote).Run();
  if (!isDone) return;
  session.ExitAtEnd();
  session.Answer(gathering.Finish());
}

}  // namespace

int main(int count, char** arguments) {
  return RunHelper("rng-gather-tty", [&] {
    const bool records = count == 3 && std::string(arguments[1]) == "--record";
    records ? RecordKeys(arguments[2]) : AnswerPlugin(Draw);
  });
}
