// rng-gather-x11: gathers entropy from the mouse and the keys in a window, for the kind "unixx11".

#include "helpers/session/remote_display.h"
#include "helpers/session/session.h"
#include "helpers/x11/asking.h"

#include <exception>
#include <iostream>

namespace {

// The window is closed before the bytes are sent.
void Draw(const Session& session) {
  session.ExitAtEnd();
  const HmacAlgorithm algorithm;
  const bool isRemote = IsDisplayRemote();
  Gathering gathering(algorithm, DrawSystemBytes(), isRemote);
  if (Asking(gathering, isRemote).Run()) session.Answer(gathering.Finish());
}

}  // namespace

int main() {
  try {
    const Session session;
    if (session.Request().task == HelperRequest::kSelfTest) {
      session.AnswerSelfTest();
    } else if (session.Request().task == HelperRequest::kDraw) {
      Draw(session);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "rng-gather-x11: " << error.what() << '\n';
    return 1;
  }
}
