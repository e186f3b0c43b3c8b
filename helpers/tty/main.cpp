// rng-gather-tty: gathers entropy from the keys that a user presses in the terminal, for the kind "biokbd".

#include "helpers/session/session.h"
#include "helpers/tty/network.h"
#include "helpers/tty/terminal.h"
#include "helpers/tty/typing.h"

#include <exception>
#include <iostream>

namespace {

void Draw(Session& session) {
  const HmacAlgorithm algorithm;
  Terminal terminal;
  const bool isRemote = MayBeRemote(terminal.Get());
  Gathering gathering(algorithm, DrawSystemBytes(), isRemote);
  if (Typing(session, terminal, gathering, isRemote).Run()) session.Answer(gathering.Finish());
}

}  // namespace

int main() {
  try {
    Session session;
    if (session.Request().task == HelperRequest::kSelfTest) {
      session.AnswerSelfTest();
    } else if (session.Request().task == HelperRequest::kDraw) {
      Draw(session);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "rng-gather-tty: " << error.what() << '\n';
    return 1;
  }
}
