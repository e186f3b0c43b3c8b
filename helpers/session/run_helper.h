#ifndef HELPERS_SESSION_RUN_HELPER_H
#define HELPERS_SESSION_RUN_HELPER_H

#include "helpers/session/session.h"

#include <functional>

/// The main function of a helper: does the work and returns the exit status. If the work throws, it prints the
/// program's name and the error.
int RunHelper(const char* name, const std::function<void()>& work);

/// The work for a plug-in: waits for its request and answers it, a draw by calling `draw`.
void AnswerPlugin(void (*draw)(const Session& session));

#endif
