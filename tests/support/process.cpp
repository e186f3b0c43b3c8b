#include "tests/support/process.h"

#include "tests/support/tree.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void Redirect(int descriptor, const std::string& file) {
  const int opened = ::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (opened < 0 || ::dup2(opened, descriptor) < 0) ::_exit(127);
  ::close(opened);
}

[[noreturn]] void Become(const std::function<int()>& work, const std::string& output,
                         const std::string& errors) {
  Redirect(STDIN_FILENO, "/dev/null");
  Redirect(STDOUT_FILENO, output);
  Redirect(STDERR_FILENO, errors);
  const int status = work();
  std::cout.flush();
  ::_exit(status);
}

}  // namespace

Result RunForked(const std::function<int()>& work) {
  const std::string output = TreePath("out");
  const std::string errors = TreePath("err");
  std::fflush(nullptr);  // otherwise the copy would print it, too
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) Become(work, output, errors);
  int status = 0;
  if (::waitpid(child, &status, 0) != child) throw std::runtime_error("lost a child");
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(output), ReadFile(errors),
          WIFSIGNALED(status) ? WTERMSIG(status) : 0};
}

Result RunShell(const std::string& command) {
  return RunForked([&command] {
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    return 127;
  });
}

std::size_t CountProcessesOf(const std::string& program) {
  std::size_t count = 0;
  std::error_code unknown;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", unknown)) {
    std::error_code ended;
    count += std::filesystem::read_symlink(entry.path() / "exe", ended) == program;
  }
  return count;
}
