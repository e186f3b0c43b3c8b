#ifndef TOOLS_RNGCTL_DRAWING_PROGRESS_H
#define TOOLS_RNGCTL_DRAWING_PROGRESS_H

#include <chrono>
#include <cstdint>

/// A bar on standard error, if that is a terminal and the work takes longer than a second. It is erased
/// before the end, because other output may follow on that line.
class Progress {
 public:
  /// `isWanted`: false if the output may appear on the same terminal.
  Progress(std::uint64_t bytes, bool isWanted);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Erase(); }

  void Show(std::uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;

  void Erase();

  const std::uint64_t total;
  const bool isPossible;
  Clock::time_point next = Clock::now() + std::chrono::seconds(1);
  bool isShown = false;
};

#endif
