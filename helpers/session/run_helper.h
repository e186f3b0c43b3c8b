#ifndef HELPERS_SESSION_RUN_HELPER_H
#define HELPERS_SESSION_RUN_HELPER_H

#include "helpers/session/session.h"

#include <functional>

/// The main function of a helper: does the work and returns the exit status. Prints what it throws after the
/// program's name.
int RunHelper(const char* name, const std::function<void()>& work);

/// The work for a plug-in: waits for its request, and answers it, for a draw by `draw`.
void AnswerPlugin(void (*draw)(const Session& session));

#endif
