#include "tools/rngctl/terminal/wait_notice.h"

#include "tools/rngctl/terminal/text.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr char kErase[] = "\r\033[K";

}  // namespace

WaitNotice::WaitNotice(const std::string& waitedFor) : text(Printable(waitedFor)) {
  if (::isatty(STDERR_FILENO) != 1) return;
  thread = std::jthread([this](const std::stop_token& end) { ShowUntil(end); });
}

void WaitNotice::ShowUntil(const std::stop_token& end) {
  std::unique_lock guard(lock);
  const auto never = [] { return false; };
  hasEnded.wait_for(guard, end, std::chrono::seconds(1), never);
  if (end.stop_requested()) return;
  isShown = true;
  std::fputs(text.c_str(), stderr);
  hasEnded.wait(guard, end, never);
  std::fputs(kErase, stderr);
}

void WaitNotice::PrintAbove(const std::string& lines) {
  const std::lock_guard guard(lock);
  const bool wasShown = isShown;
  std::fprintf(stderr, "%s%s%s", wasShown ? kErase : "", PrintableLines(lines).c_str(),
               wasShown ? text.c_str() : "");
}
