// Calls the function DO in IsAvailable, and also in GetName if RNG_TEST_NAME is set, but only in a process that runs a
// hidden command of rngctl, unless RNG_TEST_ANYWHERE is set. It writes what it finds to files in the case's tree.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool g_isInChild = false;

__attribute__((constructor)) void FindCommand(int count, char** arguments, char**) {
  g_isInChild = count > 1 && std::strstr(arguments[1], "-child");
}

std::string InTree(const char* name) {
  return std::string(std::getenv("RNG_TEST_TREE")) + '/' + name;
}

int OpenNotes() {
  return ::open(InTree("notes").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

void Note(const std::string& line) {
  const int notes = OpenNotes();
  ::write(notes, (line + '\n').data(), line.size() + 1);
  ::close(notes);
}

[[maybe_unused]] void ReadInput() {
  char piece[64];
  Note(std::to_string(::read(STDIN_FILENO, piece, sizeof piece)) + " bytes");
}

[[maybe_unused]] void Crash() {
  rlimit limit = {};
  ::getrlimit(RLIMIT_CORE, &limit);
  Note("up to " + std::to_string(limit.rlim_cur) + ", at most " + std::to_string(limit.rlim_max));
  std::raise(SIGSEGV);
}

[[noreturn]] [[maybe_unused]] void Throw() { throw std::runtime_error("no driver"); }

[[maybe_unused]] void NoteItsEnd() {
  std::atexit([] { Note("ends"); });
  Note("begins");
}

// Only SIGKILL ends the process earlier.
[[noreturn]] [[maybe_unused]] void StayFor(unsigned seconds) {
  for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_IGN);
  ::sleep(seconds);
  Note("outlasted");
  ::_exit(0);
}

[[maybe_unused]] void Hang() {
  Note("hangs");
  StayFor(60);
}

[[maybe_unused]] void TellOfSignals() {
  std::signal(SIGTERM, [](int) {
    Note("terminated");
    ::_exit(0);
  });
  Note("waits");
  ::pause();
}

[[maybe_unused]] void ListDescriptors() {
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(OpenNotes(), STDOUT_FILENO);
    ::execl("/bin/ls", "ls", "-x", "/proc/self/fd", nullptr);
    ::_exit(1);
  }
  ::waitpid(child, nullptr, 0);
}

[[maybe_unused]] void FillPipes() {
  const std::string lines(50, 'x');
  for (int i = 0; i < 20000; ++i) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
      ::write(stream, (lines + '\n').data(), lines.size() + 1);
    }
  }
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) ::write(stream, "the end", 7);
  Note("printed");
}

// The copies inherit every descriptor of this process, including the write ends of the pipes that rngctl reads. One is
// the other's child.
[[maybe_unused]] void LeaveTwoCopies() {
  if (::fork() != 0) return;
  ::setsid();
  ::fork();
  StayFor(30);
}

[[maybe_unused]] void LeaveTwoCopiesAndHang() {
  LeaveTwoCopies();
  Hang();
}

void Act() {
  if (g_isInChild || std::getenv("RNG_TEST_ANYWHERE")) DO();
}

class InChildRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (std::getenv("RNG_TEST_NAME")) Act();
    return CorrectRng::GetName(buffer);
  }
  bool IsAvailable() override {
    Act();
    return true;
  }
};

}  // namespace

EXPORT_RNG(InChildRng)

// So that "rngctl list" asks it in a child.
std::int32_t GetRngReport(char*) { return 0; }
