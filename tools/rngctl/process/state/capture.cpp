#include "tools/rngctl/process/descendants.h"
#include "tools/rngctl/process/state.h"
#include "tools/rngctl/process/state/memory_map.h"

#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <xmmintrin.h>

namespace {

std::map<int, SignalAction> Actions(const MemoryMap& memory) {
  std::map<int, SignalAction> actions;
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0) continue;  // the C library's own
    auto* const handler = reinterpret_cast<void*>(action.sa_handler);
    const bool isCode = action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
    actions[signal] = {handler, action.sa_flags, isCode ? memory.PlaceOf(handler) : ""};
  }
  return actions;
}

std::set<int> BlockedSignals() {
  sigset_t mask;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  std::set<int> blocked;
  for (int signal = 1; signal < NSIG; ++signal) {
    if (::sigismember(&mask, signal) == 1) blocked.insert(signal);
  }
  return blocked;
}

// The value of a line such as "Umask:  0022". umask() cannot read the mask without setting it.
std::string Status(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != name + ":") continue;
    status >> word;
    return word;
  }
  return "";
}

std::string InWords(rlim_t limit) {
  return limit == RLIM_INFINITY ? "unlimited" : std::to_string(limit);
}

void AddLimits(std::map<std::string, std::string>& values) {
  for (const auto& [name, number] :
       {std::pair("RLIMIT_AS", RLIMIT_AS), std::pair("RLIMIT_CORE", RLIMIT_CORE),
        std::pair("RLIMIT_CPU", RLIMIT_CPU), std::pair("RLIMIT_DATA", RLIMIT_DATA),
        std::pair("RLIMIT_FSIZE", RLIMIT_FSIZE), std::pair("RLIMIT_MEMLOCK", RLIMIT_MEMLOCK),
        std::pair("RLIMIT_NOFILE", RLIMIT_NOFILE), std::pair("RLIMIT_NPROC", RLIMIT_NPROC),
        std::pair("RLIMIT_STACK", RLIMIT_STACK)}) {
    rlimit limit = {};
    ::getrlimit(number, &limit);
    values["the limit " + std::string(name)] = InWords(limit.rlim_cur);
    values["the hard limit " + std::string(name)] = InWords(limit.rlim_max);
  }
}

std::string AlternateStack() {
  stack_t stack = {};
  ::sigaltstack(nullptr, &stack);
  if ((static_cast<unsigned>(stack.ss_flags) & SS_DISABLE) != 0) return "none";
  return "one of " + std::to_string(stack.ss_size) + " bytes";
}

// A library that is linked with -ffast-math changes it when it is loaded.
void AddFloatingPoint(std::map<std::string, std::string>& values) {
  constexpr unsigned kZeros = 0x8040;  // small results and operands count as zero
  values["the rounding of floating-point numbers"] = "mode " + std::to_string(std::fegetround());
  values["the floating-point exceptions that raise a signal"] =
      "mask " + std::to_string(::fegetexcept());
  values["the treatment of very small floating-point numbers"] =
      (_mm_getcsr() & kZeros) == 0 ? "exact" : "zero";
}

std::map<std::string, std::string> Values() {
  std::error_code isGone;
  std::map<std::string, std::string> values = {
      {"the working directory", std::filesystem::read_symlink("/proc/self/cwd", isGone).string()},
      {"the umask", Status("Umask")},
      {"the locale", std::setlocale(LC_ALL, nullptr)},
      {"the locale of the thread",
       ::uselocale(nullptr) == LC_GLOBAL_LOCALE ? "the process's" : "its own"},
      {"the priority", std::to_string(::getpriority(PRIO_PROCESS, 0))},
      {"the scheduling policy", std::to_string(::sched_getscheduler(0))},
      {"the alternate signal stack", AlternateStack()},
      {"the personality", std::to_string(::personality(0xFFFFFFFF))},
      {"the dumpable flag", std::to_string(::prctl(PR_GET_DUMPABLE))},
      {"the user ID", std::to_string(::geteuid())},
      {"the group ID", std::to_string(::getegid())},
      {"the process group", std::to_string(::getpgrp())},
      {"the session", std::to_string(::getsid(0))}};
  AddLimits(values);
  AddFloatingPoint(values);
  return values;
}

std::set<std::string> Timers() {
  std::set<std::string> timers;
  for (const auto& [name, number] :
       {std::pair("ITIMER_REAL", ITIMER_REAL), std::pair("ITIMER_VIRTUAL", ITIMER_VIRTUAL),
        std::pair("ITIMER_PROF", ITIMER_PROF)}) {
    itimerval timer = {};
    ::getitimer(number, &timer);
    if (timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0) timers.insert(name);
  }
  std::ifstream posix("/proc/self/timers");  // not every system has it
  for (std::string word; posix >> word;) {
    if (word == "ID:" && posix >> word) timers.insert("POSIX timer " + word);
  }
  return timers;
}

std::map<std::string, EnvironmentEntry> Environment(const MemoryMap& memory) {
  std::map<std::string, EnvironmentEntry> entries;
  for (char** slot = environ; slot; ++slot) {
    if (memory.CountReadable(slot) < sizeof *slot) {
      entries[""] = {"", kUnmapped};  // no variable has that name
      break;
    }
    if (!*slot) break;
    const Place place = memory.PlaceOf(*slot);
    const std::string text = memory.ReadText(*slot);
    const std::size_t middle = text.find('=');
    const std::string value = middle == std::string::npos ? "" : text.substr(middle + 1);
    entries.emplace(text.substr(0, middle), EnvironmentEntry{value, place});
  }
  return entries;
}

Place PlaceOfBuffer(const MemoryMap& memory, const FILE* stream) {
  if (!stream) return "";
  if (memory.CountReadable(stream) < sizeof(FILE)) return kUnmapped;
  return stream->_IO_buf_base ? memory.PlaceOf(stream->_IO_buf_base) : "";
}

// What it refers to, and whether it blocks: that belongs to everyone who has it open.
std::string StreamOf(int descriptor) {
  struct stat file = {};
  if (::fstat(descriptor, &file) != 0) return "";
  const bool blocks = (static_cast<unsigned>(::fcntl(descriptor, F_GETFL)) & O_NONBLOCK) == 0;
  return std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino) + ":" +
         std::to_string(file.st_rdev) + (blocks ? "" : " O_NONBLOCK");
}

}  // namespace

ProcessSnapshot CaptureProcessState() {
  const MemoryMap memory;
  return {Actions(memory),
          BlockedSignals(),
          Values(),
          Timers(),
          Environment(memory),
          {{"stdin", PlaceOfBuffer(memory, stdin)},
           {"stdout", PlaceOfBuffer(memory, stdout)},
           {"stderr", PlaceOfBuffer(memory, stderr)},
           {"std::cin", memory.PlaceOf(std::cin.rdbuf())},
           {"std::cout", memory.PlaceOf(std::cout.rdbuf())},
           {"std::cerr", memory.PlaceOf(std::cerr.rdbuf())}},
          {{"standard input", StreamOf(STDIN_FILENO)},
           {"standard output", StreamOf(STDOUT_FILENO)},
           {"standard error", StreamOf(STDERR_FILENO)}},
          ListChildren(),
          memory.IsKnown()};
}
