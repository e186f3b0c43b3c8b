#include "tools/rngctl/drawing/progress.h"

#include <cstdio>
#include <unistd.h>

Progress::Progress(std::uint64_t bytes, bool isWanted)
    : total(bytes), isPossible(isWanted && ::isatty(STDERR_FILENO) == 1) {}

void Progress::Show(std::uint64_t done) {
  if (done == total) Erase();
  const auto now = Clock::now();
  if (!isPossible || done == total || now < next) return;
  next = now + std::chrono::milliseconds(100);
  isShown = true;
  const auto filled = static_cast<int>(static_cast<double>(done) / static_cast<double>(total) * 40);
  std::fprintf(stderr, "\r[%-40.*s] %3d %%", filled, "########################################",
               filled * 100 / 40);
}

void Progress::Erase() {
  if (isShown) std::fputs("\r\033[K", stderr);
  isShown = false;
}
