#include "tools/rngctl/commands/output.h"

#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

char g_unfinished[PATH_MAX];

void RemoveUnfinished(int signal) {
  ::unlink(g_unfinished);
  ::raise(signal);  // with the default action, which SA_RESETHAND has restored
}

// An interrupted draw must not leave half a file. Ignored signals stay ignored.
void RemoveWhenInterrupted(const std::string& temporary) {
  temporary.copy(g_unfinished, sizeof g_unfinished - 1);
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = RemoveUnfinished;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

Output::Output(const std::string& path) : file(path), descriptor(STDOUT_FILENO) {
  if (file.empty()) return;
  std::error_code unknown;                                                 // opening it reports why
  if (fs::exists(file, unknown) && !fs::is_regular_file(file, unknown)) {  // a device or a pipe
    descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  } else {
    const fs::path place = fs::weakly_canonical(file, unknown);
    temporary = (unknown ? file : place.string()) + ".XXXXXX";
    descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    descriptor < 0 ? temporary.clear() : RemoveWhenInterrupted(temporary);
  }
  if (descriptor < 0) Refuse();
}

Output::~Output() {
  if (descriptor > STDERR_FILENO) ::close(descriptor);
  if (!temporary.empty()) ::unlink(temporary.c_str());
}

bool Output::IsTerminal() const { return ::isatty(descriptor) == 1; }

void Output::Write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      Refuse();
    }
  }
}

void Output::Commit() {
  if (temporary.empty()) return;
  const std::string place = temporary.substr(0, temporary.rfind('.'));
  if (::rename(temporary.c_str(), place.c_str()) != 0) Refuse();
  temporary.clear();
}

void Output::Refuse() const {
  const std::string where = file.empty() ? "standard output" : Quoted(file);
  throw Refusal(kNegativeAnswer, "Cannot write to " + where + ": " + std::strerror(errno) + ".");
}
