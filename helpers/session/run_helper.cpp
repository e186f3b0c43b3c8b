#include "helpers/session/run_helper.h"

#include <exception>
#include <iostream>

int RunHelper(const char* name, const std::function<void()>& work) {
  try {
    work();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return 1;
  }
}

void AnswerPlugin(void (*draw)(const Session& session)) {
  const Session session;
  if (session.Request().task == HelperRequest::kSelfTest) session.AnswerSelfTest();
  if (session.Request().task == HelperRequest::kDraw) draw(session);
}
