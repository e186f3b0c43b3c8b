#include "tests/interactive/host_process.h"

#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

std::vector<char*> Pointers(const HostProcess::Words& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void Execute(const HostProcess::Words& command, const HostProcess::Words& variables,
                          const std::string& terminal, int output) {
  ::setsid();
  if (!terminal.empty()) {
    ::ioctl(::open(terminal.c_str(), O_RDWR | O_CLOEXEC), TIOCSCTTY, 0);
  }
  const std::string input = terminal.empty() ? "/dev/null" : terminal;
  ::dup2(::open(input.c_str(), O_RDWR | O_CLOEXEC), STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(terminal.empty() ? output : STDIN_FILENO, STDERR_FILENO);
  ::execve(command[0].c_str(), Pointers(command).data(), Pointers(variables).data());
  ::_exit(127);
}

struct Entry {
  std::string name;
  char state = 0;
  pid_t parent = 0;
  pid_t session = 0;
};

// /proc/PID/stat has the name in parentheses, then: state, parent, group, session.
Entry ReadEntry(const std::filesystem::path& folder) {
  std::ifstream file(folder / "stat");
  std::string line;
  std::getline(file, line);
  const std::size_t begin = line.find('(');
  const std::size_t end = line.rfind(") ");
  if (begin == std::string::npos || end == std::string::npos) return {};
  Entry entry;
  entry.name = line.substr(begin + 1, end - begin - 1);
  pid_t group = 0;
  std::istringstream(line.substr(end + 2)) >> entry.state >> entry.parent >> group >> entry.session;
  return entry;
}

}  // namespace

bool WaitUntil(const std::function<bool()>& isTrue) {
  for (int look = 0; look < 6000; ++look) {
    if (isTrue()) return true;
    std::this_thread::sleep_for(5ms);
  }
  return false;
}

bool Sleeps(pid_t process) {
  clockid_t clock = 0;
  timespec before = {};
  timespec after = {};
  if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &before) != 0) {
    throw std::runtime_error("no such process");
  }
  const auto start = std::chrono::steady_clock::now();
  std::this_thread::sleep_for(1s);
  const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - start;
  if (::clock_gettime(clock, &after) != 0) throw std::runtime_error("no such process");
  const auto used = std::chrono::seconds(after.tv_sec - before.tv_sec) +
                    std::chrono::nanoseconds(after.tv_nsec - before.tv_nsec);
  return 10 * used < elapsed;
}

HostProcess::HostProcess(const Words& command, const Words& variables,
                         const std::string& terminal) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("no pipe");
  ::fcntl(ends[1], F_SETFL, 0);
  process = ::fork();
  if (process == 0) Execute(command, variables, terminal, ends[1]);
  ::close(ends[1]);
  outputEnd = ends[0];
}

HostProcess::~HostProcess() {
  for (const pid_t other : Others()) ::kill(other, SIGKILL);
  if (status == -1) {
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
  }
  ::close(outputEnd);
}

void HostProcess::Send(int signal) const { ::kill(process, signal); }

void HostProcess::ReadOutput() {
  char part[4096];
  ssize_t count = 0;
  while ((count = ::read(outputEnd, part, sizeof part)) > 0) {
    output.append(part, static_cast<std::size_t>(count));
  }
}

bool HostProcess::Prints(const std::string& text) {
  return WaitUntil([&] {
           const bool hasEnded = status != -1 || ::waitpid(process, &status, WNOHANG) == process;
           ReadOutput();
           return hasEnded || output.find(text) != std::string::npos;
         }) &&
         output.find(text) != std::string::npos;
}

const std::string& HostProcess::Finish() {
  WaitUntil([&] {
    ReadOutput();
    return status != -1 || ::waitpid(process, &status, WNOHANG) == process;
  });
  ReadOutput();
  return output;
}

std::vector<pid_t> HostProcess::Others(const std::string& name) const {
  std::vector<pid_t> found;
  for (const auto& folder : std::filesystem::directory_iterator("/proc")) {
    const pid_t other = std::atoi(folder.path().filename().c_str());
    if (other <= 0 || other == process) continue;
    const Entry entry = ReadEntry(folder.path());
    if (entry.state == 'Z' && entry.parent != process) continue;
    if (entry.session == process && (name.empty() || entry.name == name)) found.push_back(other);
  }
  return found;
}

bool HostProcess::IsAlone() const {
  return WaitUntil([this] { return Others().empty(); });
}
