#include "tools/rngctl/process/child.h"

#include "tools/rngctl/process/channel.h"
#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void RefuseStart(int error) {
  throw Refusal(kNegativeAnswer,
                std::string("Cannot start a process: ") + std::strerror(error) + ".");
}

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : value(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }
  void Close() {
    if (value >= 0) ::close(value);
    value = -1;
  }
  int value;
};

// Two ends of a channel: a pipe, or a pair of sockets.
struct Ends {
  Descriptor ours;
  Descriptor theirs;
};

void MakePipe(Ends& pipe) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) RefuseStart(errno);
  pipe.ours.value = ends[0];
  pipe.theirs.value = ends[1];
}

void MakeSocketPair(Ends& sockets) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) RefuseStart(errno);
  sockets.ours.value = ends[0];
  sockets.theirs.value = ends[1];
}

// This one's, with another LD_LIBRARY_PATH if one is given.
std::vector<std::string> ChildEnvironment(const std::string& libraryPath) {
  const std::string name = "LD_LIBRARY_PATH=";
  std::vector<std::string> result;
  for (char** entry = environ; *entry; ++entry) {
    const bool isKept = libraryPath.empty() || std::strncmp(*entry, name.c_str(), name.size()) != 0;
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

pid_t Spawn(const ChildOrder& order, int outputDescriptor, int messageDescriptor) {
  std::vector<std::string> environment = ChildEnvironment(order.libraryPath);
  std::vector<std::string> arguments = {"rngctl", order.command};
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, outputDescriptor, STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, messageDescriptor, kMessageDescriptor);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, "/proc/self/exe", &actions, &attributes,
                                  Pointers(arguments).data(), Pointers(environment).data());
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) RefuseStart(error);
  return child;
}

// False when `descriptor` has ended or has nothing to read now.
bool ReadSome(int descriptor, std::string& text) {
  char piece[4096];
  const ssize_t count = ::read(descriptor, piece, sizeof piece);
  if (count > 0) text.append(piece, static_cast<std::size_t>(count));
  return count > 0;
}

// Collects what `child` sends until it exits. The end of the channel would come too late: processes
// that the child has started may keep it open. False when the time limit came first.
bool Collect(int messages, int child, const ChildOrder& order, std::string& text) {
  pollfd waiting[] = {{child, POLLIN, 0}, {messages, POLLIN, 0}};
  Clock::time_point end = Clock::now() + order.limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int count = ::poll(waiting, 2, static_cast<int>(std::max<long>(left, 0)));
    if (count == 0) return false;
    if (count < 0) continue;
    if (waiting[1].revents && order.limited == LimitOf::kSilence) end = Clock::now() + order.limit;
    if (waiting[1].revents && !ReadSome(messages, text)) waiting[1].fd = -1;
    if (waiting[0].revents) break;
  }
  while (ReadSome(messages, text)) {
  }
  return true;
}

}  // namespace

ChildResult RunChild(const ChildOrder& order) {
  Ends messages;
  Ends output;
  MakeSocketPair(messages);
  MakePipe(output);
  if (!WriteMessage(messages.ours.value, order.request)) RefuseStart(errno);
  ::fcntl(messages.ours.value, F_SETFL, O_NONBLOCK);
  const pid_t child = Spawn(order, output.theirs.value, messages.theirs.value);
  messages.theirs.Close();
  const Descriptor watched(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  std::string text;
  const bool hasEnded =
      watched.value >= 0 && Collect(messages.ours.value, watched.value, order, text);
  ::kill(-child, SIGKILL);  // also the processes that a child has left behind
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  ChildResult result{FindLastMessage(text), ChildEnd::kTimedOut, 0, ""};
  ReadSome(output.ours.value, result.printed);
  if (!hasEnded) return result;
  result.end = WIFSIGNALED(status) ? ChildEnd::kSignalled : ChildEnd::kExited;
  result.code = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  return result;
}

std::string DescribeEnd(const ChildResult& result, std::chrono::seconds limit) {
  switch (result.end) {
    case ChildEnd::kTimedOut:
      return "did not answer within " + std::to_string(limit.count()) + " s";
    case ChildEnd::kSignalled:
      return "crashed with signal " + std::to_string(result.code) + " (" +
             ::strsignal(result.code) + ")";
    default:  // a child that cannot send its messages looks as if it had exited early
      return "exited with status " + std::to_string(result.code) +
             (result.code == 0 ? ", or closed descriptors that are not its own," : "");
  }
}

std::string ReceiveRequest() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  ::fcntl(kMessageDescriptor, F_SETFD, FD_CLOEXEC);
  if (const std::optional<std::string> request = ReadRequest()) return *request;
  throw Refusal(kWrongUsage, "This command is only for rngctl itself.");
}
