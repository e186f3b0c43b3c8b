#include "tools/rngctl/terminal/wait_notice.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>

WaitNotice::WaitNotice(const std::string& waitedFor) : text(waitedFor) {
  if (::isatty(STDERR_FILENO) != 1) return;
  thread = std::jthread([this](const std::stop_token& end) { ShowUntil(end); });
}

void WaitNotice::ShowUntil(const std::stop_token& end) {
  std::unique_lock guard(lock);
  const auto never = [] { return false; };
  hasEnded.wait_for(guard, end, std::chrono::seconds(1), never);
  if (end.stop_requested()) return;
  std::fputs(text.c_str(), stderr);
  hasEnded.wait(guard, end, never);
  std::fputs("\r\033[K", stderr);
}
