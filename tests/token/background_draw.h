#ifndef TESTS_TOKEN_BACKGROUND_DRAW_H
#define TESTS_TOKEN_BACKGROUND_DRAW_H

#include <atomic>
#include <functional>
#include <string>
#include <thread>

/// A draw in a thread of its own, which the destructor waits for.
class BackgroundDraw {
 public:
  explicit BackgroundDraw(const std::function<std::string()>& draw)
      : thread([this, draw] {
          result = draw();
          hasEnded = true;
        }) {}
  BackgroundDraw(const BackgroundDraw&) = delete;
  BackgroundDraw& operator=(const BackgroundDraw&) = delete;
  ~BackgroundDraw() {
    if (thread.joinable()) thread.join();
  }

  bool HasEnded() const { return hasEnded; }

  /// Waits until it has ended, and returns its result.
  const std::string& Finish() {
    thread.join();
    return result;
  }

 private:
  std::atomic<bool> hasEnded = false;
  std::string result;
  std::thread thread;  // the last: it uses the others
};

#endif
