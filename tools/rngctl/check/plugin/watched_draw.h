#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_DRAW_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_DRAW_H

#include "tools/rngctl/check/plugin/guarded_buffer.h"
#include "tools/rngctl/check/plugin/watched_plugin.h"

#include <future>
#include <memory>
#include <thread>

/// More bytes than a plug-in, or its source, is likely to handle at once.
inline constexpr std::size_t kLargeDraw = 70000;

/// A draw in a thread of its own, because it may wait for a user or a device, possibly forever.
class WatchedDraw {
 public:
  WatchedDraw(WatchedPlugin& plugin, std::size_t size, unsigned char fill)
      : WatchedDraw(plugin, GuardedBuffer(size, fill)) {}
  WatchedDraw(WatchedPlugin& plugin, const GuardedBuffer& before);
  WatchedDraw(const WatchedDraw&) = delete;
  WatchedDraw& operator=(const WatchedDraw&) = delete;
  ~WatchedDraw();

  bool EndsWithin(std::chrono::milliseconds time) const;

  /// What `Generate` returned; waits for it. If it threw, the check ends here.
  bool Answer();
  const GuardedBuffer& Buffer() const { return *buffer; }

 private:
  const std::shared_ptr<GuardedBuffer> buffer;  // shared with the thread
  std::future<bool> answer;
  std::thread thread;
};

/// For people: "2.5 s".
std::string InSeconds(std::chrono::milliseconds time);

inline constexpr char kCancelFix[] =
    "Cancel must not take a lock that a waiting draw holds: let the draw wait on a condition "
    "variable, which releases the lock, or set an atomic flag.";

inline constexpr char kDrawsWait[] = "a draw takes long, or waits for a user or a device";

/// Calls `Cancel` while a draw waits. If the call does not return, the check ends as failed, with an
/// error: whatever the check is about, hosts that cancel a draw hang.
void CancelDraws(WatchedPlugin& plugin);

struct Drawn {
  bool answer;
  GuardedBuffer buffer;
};
/// Makes one draw. If it waits, it is cancelled and the check ends as not examined.
Drawn Draw(WatchedPlugin& plugin, std::size_t size, unsigned char fill);

/// The bytes of a draw. If the draw fails, the check ends as not examined.
GuardedBuffer DrawBytes(WatchedPlugin& plugin, std::size_t size, unsigned char fill);

/// Ends the check as not examined because a draw waits, and tells the other checks.
[[noreturn]] void EndBecauseDrawsWait();

/// Whether its flags say that a draw may wait.
bool MayWait(WatchedPlugin& plugin);

/// Ends the check as failed, with this fault, unless a draw succeeds or the source ran out.
void RequireDraw(WatchedPlugin& plugin, const std::string& fault);

/// In a fresh process: whether these calls, one after the other and nothing else, all succeed.
Finding Repeat(WatchedPlugin& plugin, const SourceCalls& calls);

/// Whether a few draws all succeed. If not, a check cannot blame a failed draw on what it did itself.
bool DrawsReliably(WatchedPlugin& plugin);

/// Whether checks of something else may draw: draws are not known to wait, to end the process or to
/// throw.
bool CanDraw(const WatchedPlugin& plugin);

#endif
