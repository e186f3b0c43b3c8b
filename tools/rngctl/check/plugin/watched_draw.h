#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_DRAW_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_DRAW_H

#include "tools/rngctl/check/plugin/guarded_buffer.h"
#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <future>
#include <memory>
#include <thread>

/// More bytes than a plug-in, or its source, is likely to handle at once.
inline constexpr std::size_t kLargeDraw = 70000;

/// A draw in a thread of its own, because it may wait for a user or a device, and for ever.
class WatchedDraw {
 public:
  WatchedDraw(WatchedPlugin& plugin, std::size_t size, unsigned char fill);
  WatchedDraw(const WatchedDraw&) = delete;
  WatchedDraw& operator=(const WatchedDraw&) = delete;
  ~WatchedDraw();

  bool EndsWithin(std::chrono::milliseconds time) const;

  /// What `Generate` answered, when it has ended; the check ends here when it threw.
  bool Answer();
  const GuardedBuffer& Buffer() const { return *buffer; }

 private:
  const std::shared_ptr<GuardedBuffer> buffer;  // the thread's, too
  std::future<bool> answer;
  std::thread thread;
};

struct Drawn {
  bool answer;
  GuardedBuffer buffer;
};
/// Makes one draw. When that waits it is cancelled, and the check ends as not examined further.
Drawn Draw(WatchedPlugin& plugin, std::size_t size, unsigned char fill);

/// The bytes of a draw that succeeds; the check ends, as not examined further, when it does not.
GuardedBuffer DrawBytes(WatchedPlugin& plugin, std::size_t size, unsigned char fill);

/// Whether a few draws all succeed: only then a failure has the reason that a check gives it.
bool DrawsReliably(WatchedPlugin& plugin);

/// For checks of something else, when draws are not known to wait or to end the process.
bool CanDraw(const WatchedPlugin& plugin);

#endif
