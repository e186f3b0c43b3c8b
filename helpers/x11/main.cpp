// rng-gather-x11: gathers entropy from the mouse and the keys in a window, for the kind "unixx11".

#include "helpers/session/remote_display.h"
#include "helpers/session/run_helper.h"
#include "helpers/x11/asking.h"

namespace {

// The window is closed before the bytes are sent.
void Draw(const Session& session) {
  session.ExitAtEnd();
  const bool isRemote = IsDisplayRemote();
  Gathering gathering(DrawSystemBytes(), isRemote);
  if (Asking(gathering, isRemote).Run()) session.Answer(gathering.Finish());
}

}  // namespace

int main() {
  return RunHelper("rng-gather-x11", [] { AnswerPlugin(Draw); });
}
