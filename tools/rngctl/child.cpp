#include "child.h"

#include "host.h"

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
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kReportDescriptor = 3;

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

class Pipe {
 public:
  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) RefuseStart(errno);
    reading.value = ends[0];
    writing.value = ends[1];
  }
  Descriptor reading;
  Descriptor writing;
};

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

pid_t Spawn(std::vector<std::string> arguments, const std::string& libraryPath,
            int outputDescriptor, int reportDescriptor) {
  std::vector<std::string> environment = ChildEnvironment(libraryPath);
  arguments.insert(arguments.begin(), "rngctl");
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, outputDescriptor, STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, reportDescriptor, kReportDescriptor);
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

// True until `descriptor` has ended or holds nothing more for now.
bool ReadSome(int descriptor, std::string& text) {
  char piece[4096];
  const ssize_t count = ::read(descriptor, piece, sizeof piece);
  if (count > 0) text.append(piece, static_cast<std::size_t>(count));
  return count > 0;
}

// Collects what `child` sends until it ends, which is not when the pipe is closed: what it has
// started may hold that open. False when the time was over first.
bool Collect(int reports, int child, std::chrono::milliseconds limit, LimitOf limited,
             std::string& text) {
  pollfd waiting[] = {{child, POLLIN, 0}, {reports, POLLIN, 0}};
  Clock::time_point end = Clock::now() + limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int count = ::poll(waiting, 2, static_cast<int>(std::max<long>(left, 0)));
    if (count == 0) return false;
    if (count < 0) continue;
    if (waiting[1].revents && limited == LimitOf::kSilence) end = Clock::now() + limit;
    if (waiting[1].revents && !ReadSome(reports, text)) waiting[1].fd = -1;
    if (waiting[0].revents) break;
  }
  while (ReadSome(reports, text)) {
  }
  return true;
}

std::vector<nlohmann::json> Parse(const std::string& text) {
  std::vector<nlohmann::json> reports;
  for (std::size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos;
       start = end + 1) {
    nlohmann::json report =
        nlohmann::json::parse(text.begin() + static_cast<std::ptrdiff_t>(start),
                              text.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
    if (!report.is_discarded()) reports.push_back(std::move(report));
  }
  return reports;
}

}  // namespace

ChildResult RunChild(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                     const std::string& libraryPath, LimitOf limited) {
  Pipe reports;
  Pipe output;
  ::fcntl(reports.reading.value, F_SETFL, O_NONBLOCK);
  ::fcntl(output.reading.value, F_SETFL, O_NONBLOCK);
  ::fcntl(output.writing.value, F_SETFL, O_NONBLOCK);
  const pid_t child = Spawn(arguments, libraryPath, output.writing.value, reports.writing.value);
  reports.writing.Close();
  const Descriptor watched(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  std::string text;
  const bool hasEnded =
      watched.value >= 0 && Collect(reports.reading.value, watched.value, limit, limited, text);
  ::kill(-child, SIGKILL);  // also what an ended child has left behind
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  std::string printed;
  ReadSome(output.reading.value, printed);
  if (!hasEnded) return {Parse(text), ChildEnd::kTimedOut, 0, printed};
  if (WIFSIGNALED(status)) return {Parse(text), ChildEnd::kSignalled, WTERMSIG(status), printed};
  return {Parse(text), ChildEnd::kExited, WEXITSTATUS(status), printed};
}

std::string EndInWords(const ChildResult& result, std::chrono::seconds limit) {
  switch (result.end) {
    case ChildEnd::kTimedOut:
      return "no answer in " + std::to_string(limit.count()) + " s";
    case ChildEnd::kSignalled:
      return "crashed with signal " + std::to_string(result.code) + " (" +
             ::strsignal(result.code) + ")";
    default:  // without its reports a child looks as if it had ended early
      return "ended the process with status " + std::to_string(result.code) +
             (result.code == 0 ? ", or closed files that are not its own," : "");
  }
}

void BecomeChild() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  ::fcntl(kReportDescriptor, F_SETFD, FD_CLOEXEC);
}

void SendReport(const nlohmann::json& report) {
  const std::string line =
      report.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
  for (std::size_t done = 0; done < line.size();) {
    const ssize_t count = ::write(kReportDescriptor, line.data() + done, line.size() - done);
    if (count > 0) done += static_cast<std::size_t>(count);
    if (count < 0 && errno != EINTR) return;  // nobody listens any more
  }
}
