#include "tools/rngctl/process/state.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>

namespace {

using Sentences = std::vector<std::string>;

std::string NameOfSignal(int signal) {
  if (const char* const name = ::sigabbrev_np(signal)) return "SIG" + std::string(name);
  return "SIGRTMIN+" + std::to_string(signal - SIGRTMIN);
}

bool IsHandler(const SignalAction& action) {
  const auto handler = reinterpret_cast<sighandler_t>(action.handler);
  return handler != SIG_DFL && handler != SIG_IGN;
}

// Those that have an effect: signal() sets others even where it restores a default action.
unsigned EffectiveFlags(int signal, const SignalAction& action) {
  const auto flags = static_cast<unsigned>(action.flags);
  if (IsHandler(action)) return flags & ~0x04000000U;  // SA_RESTORER, which the C library sets
  return signal == SIGCHLD ? flags & (SA_NOCLDSTOP | SA_NOCLDWAIT) : 0;
}

std::string InWords(const Place& place) {
  return place == kUnmapped ? place : std::filesystem::path(place).filename().string();
}

std::string DescribeAction(int signal, const SignalAction& action) {
  const std::string name = NameOfSignal(signal);
  if (reinterpret_cast<sighandler_t>(action.handler) == SIG_IGN) return "ignores " + name;
  if (!IsHandler(action)) return "resets " + name + " to its default action";
  return "leaves a handler for " + name + (action.place.empty() ? "" : " in ") +
         InWords(action.place);
}

void AddActions(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const auto& [signal, now] : after.actions) {
    const SignalAction& then = before.actions.at(signal);
    if (now.handler != then.handler) {
      found.push_back(DescribeAction(signal, now));
    } else if (EffectiveFlags(signal, now) != EffectiveFlags(signal, then)) {
      found.push_back("changes the flags of the action for " + NameOfSignal(signal));
    }
  }
}

void AddMask(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (int signal = 1; signal < NSIG; ++signal) {
    const bool isBlocked = after.blocked.contains(signal);
    if (isBlocked == before.blocked.contains(signal)) continue;
    found.push_back((isBlocked ? "blocks " : "unblocks ") + NameOfSignal(signal));
  }
}

void AddValues(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const auto& [name, value] : after.values) {
    const std::string& then = before.values.at(name);
    if (then == value || then.empty() || value.empty()) continue;  // or it could not be read
    found.push_back(std::string("changes ").append(name).append(" to ").append(value));
  }
}

void AddTimers(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const std::string& timer : after.timers) {
    if (!before.timers.contains(timer)) found.push_back("leaves a timer running: " + timer);
  }
  for (const std::string& timer : before.timers) {
    if (!after.timers.contains(timer)) found.push_back("stops a timer of the host: " + timer);
  }
}

std::string DescribeVariable(const std::string& name, const EnvironmentEntry* then,
                             const EnvironmentEntry& now) {
  if (!now.place.empty() && (!then || now.place != then->place)) {
    return "leaves part of the environment in " + InWords(now.place) +
           (now.place == kUnmapped ? "" : ": " + name);
  }
  if (!then) return "sets the environment variable " + name;
  return now.value == then->value ? "" : "changes the environment variable " + name;
}

void AddEnvironment(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const auto& [name, now] : after.environment) {
    const auto then = before.environment.find(name);
    const std::string change =
        DescribeVariable(name, then == before.environment.end() ? nullptr : &then->second, now);
    if (!change.empty()) found.push_back(change);
  }
  for (const auto& entry : before.environment) {
    if (after.environment.contains(entry.first) || entry.second.place == kUnmapped) continue;
    found.push_back("removes the environment variable " + entry.first);
  }
}

// A stream without a buffer, or with its built-in one, uses memory of the C or C++ library.
bool IsRuntime(const Place& place) {
  const std::string name = InWords(place);
  return name.starts_with("libc.so") || name.starts_with("libstdc++.so");
}

void AddBuffers(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const auto& [name, place] : after.buffers) {
    if (place.empty() || place == before.buffers.at(name) || IsRuntime(place)) continue;
    found.push_back("leaves the buffer of " + name + " in " + InWords(place));
  }
}

void AddStandardStreams(const ProcessSnapshot& before, const ProcessSnapshot& after,
                        Sentences& found) {
  const auto file = [](const std::string& stream) { return stream.substr(0, stream.find(' ')); };
  for (const auto& [name, now] : after.standardStreams) {
    const std::string& then = before.standardStreams.at(name);
    if (now == then) continue;
    const bool isSame = file(now) == file(then);
    found.push_back(now.empty()    ? "closes " + name
                    : then.empty() ? "opens a file as " + name
                    : isSame       ? "changes the flag O_NONBLOCK of " + name
                                   : "replaces " + name);
  }
}

std::string ProgramOf(const std::string& process) {
  std::string name;
  std::getline(std::ifstream("/proc/" + process + "/comm"), name);
  return name;
}

void AddChildren(const ProcessSnapshot& before, const ProcessSnapshot& after, Sentences& found) {
  for (const pid_t child : after.children) {
    if (before.children.contains(child)) continue;
    const std::string number = std::to_string(child);
    const std::string program = ProgramOf(number);
    found.push_back("leaves a child process: " +
                    (program == ProgramOf("self") ? "a forked copy of the program" : program) +
                    " (process " + number + ")");
  }
}

}  // namespace

std::vector<std::string> Compare(const ProcessSnapshot& before, const ProcessSnapshot& after) {
  Sentences found;
  const bool isMemoryKnown = before.isMemoryKnown && after.isMemoryKnown;
  for (const auto add : {AddActions, AddMask, AddTimers, AddValues, AddEnvironment, AddBuffers,
                         AddStandardStreams, AddChildren}) {
    const bool needsMemory = add == AddActions || add == AddEnvironment || add == AddBuffers;
    if (isMemoryKnown || !needsMemory) add(before, after, found);
  }
  return found;
}
