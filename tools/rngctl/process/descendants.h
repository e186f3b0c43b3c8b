#ifndef TOOLS_RNGCTL_PROCESS_DESCENDANTS_H
#define TOOLS_RNGCTL_PROCESS_DESCENDANTS_H

#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

/// In a child, first of all: from now on it is killed when its parent ends, and a crash leaves no core file.
void BecomeDependent();

/// What a child leaves running when it ends becomes a child of this process, once this was called.
void AdoptDescendants();

/// The processes that are children of this one now.
std::set<pid_t> ListChildren();

/// Of the children of this process, those that are not in `known`: "sleep (process 4711)".
std::vector<std::string> NameNewChildren(const std::set<pid_t>& known);

/// Kills the children of this process that are not in `known`, and what those leave in turn.
void EndNewChildren(const std::set<pid_t>& known);

#endif
