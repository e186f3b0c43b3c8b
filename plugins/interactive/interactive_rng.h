#ifndef PLUGINS_INTERACTIVE_INTERACTIVE_RNG_H
#define PLUGINS_INTERACTIVE_INTERACTIVE_RNG_H

#include "plugins/interactive/kind.h"

#include <atomic>
#include <sys/types.h>

#include <rngaggregator/provider.h>

/// A generator that asks the user. Each draw starts a separate program, the helper, which does the asking: no
/// terminal settings, window or library of it ever gets into the host's process. Draws take turns.
class InteractiveRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override;
  std::int32_t GetDescription(char* buffer) override;
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char* hardwareId) override { return !hardwareId || !*hardwareId; }
  bool Generate(void* buffer, std::size_t size) override;
  bool IsAvailable() override;
  bool SelfTest() override;
  void Cancel() override;
  std::uint32_t GetFlags() override { return kRngCapabilityNeedsUser | kRngCapabilityMayBlock; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}

 private:
  class Turn;
  class Helper;

  // The socket to the helper of a draw, and the process that draws: after a fork, it may be the parent.
  struct alignas(8) Connection {  // as one word, so that it is atomic without a library
    pid_t process;
    int socket;
  };
  static constexpr Connection kNoConnection = {0, -1};

  bool Draw(unsigned char* buffer, std::size_t size, std::uint64_t cancelsBefore);

  // Atomics instead of a lock: if another thread held a lock during a fork, the copy could never take it.
  std::atomic<pid_t> drawing = 0;  // the process that draws; after a fork, it may be the parent
  std::atomic<Connection> connection = kNoConnection;
  std::atomic<std::uint64_t> cancels = 0;  // number of calls of Cancel
};

#endif
