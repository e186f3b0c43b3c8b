#include "tests/model/comparison.h"

#include "tests/model/model.h"
#include "tests/model/real.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr unsigned kSecondsOfAHang = 120;  // a sequence takes milliseconds

std::string Contrast(const char* what, const std::string& expected, const std::string& seen) {
  if (expected == seen) return "";
  return std::string("\n  ") + what + " of the model:   " + expected + "\n  " + what +
         " of the library: " + seen;
}

std::string Contrast(const Outcome& expected, const Outcome& seen) {
  return Contrast("result", expected.result, seen.result) +
         Contrast("trace", expected.trace, seen.trace) +
         Contrast("state", expected.state, seen.state);
}

}  // namespace

void WatchForHang() { ::alarm(kSecondsOfAHang); }

std::string Difference(const Steps& steps, const std::string& mistake) {
  Model model(mistake);
  Real real;
  if (const auto text = Contrast(model.Load(), real.Load()); !text.empty()) return "load:" + text;
  for (const Step& step : steps) {
    const std::string text = Contrast(model.Do(step), real.Do(step));
    if (!text.empty()) return ToText({step}) + ":" + text;
  }
  const std::string text = Contrast(model.Unload(), real.Unload());
  return text.empty() ? "" : "unload:" + text;
}

bool Fails(const Steps& steps, const std::string& mistake, bool isSilent) {
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    if (isSilent) {
      const int nowhere = ::open("/dev/null", O_WRONLY);
      ::dup2(nowhere, STDOUT_FILENO);
      ::dup2(nowhere, STDERR_FILENO);
    }
    WatchForHang();
    const std::string difference = Difference(steps, mistake);
    if (!difference.empty()) std::printf("%s\n", difference.c_str());
    std::exit(difference.empty() ? 0 : 1);  // with the checks that a sanitizer makes at the end
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) > 1 && !isSilent) {
    std::printf("ended with status %d\n", WEXITSTATUS(status));
  }
  if (WIFSIGNALED(status) && !isSilent) {
    std::printf("ended by signal %d%s\n", WTERMSIG(status),
                WTERMSIG(status) == SIGALRM ? ", since it hangs" : "");
  }
  return status != 0;
}

// Drops runs of steps, halving their length, until no single step can be missed.
Steps Shrink(Steps steps, const std::string& mistake) {
  std::size_t length = std::max<std::size_t>(1, steps.size() / 2);
  for (bool isDone = false; !isDone;) {
    bool hasDropped = false;
    for (std::size_t begin = 0; begin < steps.size();) {
      const std::size_t end = std::min(begin + length, steps.size());
      Steps fewer(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(begin));
      fewer.insert(fewer.end(), steps.begin() + static_cast<std::ptrdiff_t>(end), steps.end());
      if (Fails(fewer, mistake, true)) {
        steps = fewer;
        hasDropped = true;
      } else {
        begin = end;
      }
    }
    isDone = length == 1 && !hasDropped;
    length = std::max<std::size_t>(1, length / 2);
  }
  return steps;
}
