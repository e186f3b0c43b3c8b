#include "tools/rngctl/process/spawn.h"

#include "tools/rngctl/channel/channel.h"
#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <vector>

namespace {

[[noreturn]] void Refuse(int error) {
  if (::access("/proc/self/exe", F_OK) != 0) {
    throw Refusal(kNegativeAnswer, "rngctl needs /proc to start a process. Fix: mount /proc.");
  }
  // The standard input of the process.
  if (::access("/dev/null", F_OK) != 0) {
    throw Refusal(kNegativeAnswer, "rngctl needs /dev/null to start a process. Fix: mount /dev.");
  }
  const char* const fix = error == EMFILE ? " Fix: allow more with ulimit -n; 16 are enough." : "";
  throw Refusal(kNegativeAnswer,
                std::string("Cannot start a process: ") + std::strerror(error) + "." + fix);
}

// A number that plug-ins are not likely to close, reopen or inherit by accident; and never one of the
// standard descriptors, which this process may lack.
int HighNumber() {
  rlimit limit = {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  return static_cast<int>(std::min<rlim_t>(limit.rlim_cur / 2, 512));
}

Descriptor MoveUp(int descriptor) {
  const Descriptor low(descriptor);
  const int high = ::fcntl(descriptor, F_DUPFD_CLOEXEC, HighNumber());
  if (high < 0) Refuse(errno);
  return Descriptor(high);
}

struct Ends {
  Descriptor ours;
  Descriptor theirs;
};

Ends MakePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) Refuse(errno);
  return {MoveUp(ends[0]), MoveUp(ends[1])};
}

Ends MakeSocketPair() {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) Refuse(errno);
  return {MoveUp(ends[0]), MoveUp(ends[1])};
}

// This one's, with another LD_LIBRARY_PATH if one is given.
std::vector<std::string> ChildEnvironment(const std::string& libraryPath) {
  const std::string name = "LD_LIBRARY_PATH=";
  std::vector<std::string> result;
  for (char** entry = environ; *entry; ++entry) {
    const bool isKept = libraryPath.empty() || !std::string_view(*entry).starts_with(name);
    if (isKept) result.emplace_back(*entry);
  }
  if (!libraryPath.empty()) result.push_back(name + libraryPath);
  return result;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// The actions of a child: what it has as its descriptors.
class FileActions {
 public:
  FileActions() { ::posix_spawn_file_actions_init(&actions); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
  posix_spawn_file_actions_t actions;
};

}  // namespace

SpawnedChild Spawn(const std::string& command, const std::string& request,
                   const std::string& libraryPath, bool readsErrors) {
  Ends messages = MakeSocketPair();
  Ends output = MakePipe();
  Ends errors = readsErrors ? MakePipe() : Ends();
  if (!WriteMessage(messages.ours.Get(), request)) Refuse(errno);
  for (const Ends* ends : {&messages, &output, &errors}) {
    ::fcntl(ends->ours.Get(), F_SETFL, O_NONBLOCK);
  }
  const int channel = messages.theirs.Get();
  std::vector<std::string> environment = ChildEnvironment(libraryPath);
  std::vector<std::string> arguments = {"rngctl", command, std::to_string(channel)};
  FileActions files;
  ::posix_spawn_file_actions_addopen(&files.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&files.actions, output.theirs.Get(), STDOUT_FILENO);
  if (readsErrors) {
    ::posix_spawn_file_actions_adddup2(&files.actions, errors.theirs.Get(), STDERR_FILENO);
  }
  ::posix_spawn_file_actions_adddup2(&files.actions, channel, channel);  // survives the execution
  SpawnedChild child{0, std::move(messages.ours), std::move(output.ours), std::move(errors.ours)};
  const int error = ::posix_spawn(&child.process, "/proc/self/exe", &files.actions, nullptr,
                                  Pointers(arguments).data(), Pointers(environment).data());
  if (error != 0) Refuse(error);
  return child;
}
