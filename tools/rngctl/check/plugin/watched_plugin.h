#ifndef TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_PLUGIN_H
#define TOOLS_RNGCTL_CHECK_PLUGIN_WATCHED_PLUGIN_H

#include "tools/rngctl/check/transcript.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

#include <rngaggregator/provider.h>

/// Ends the check with this outcome.
class EarlyEnd : public std::runtime_error {
 public:
  EarlyEnd(Outcome how, const std::string& found, std::string help = "",
           std::optional<Severity> weight = {})
      : std::runtime_error(found), outcome(how), fix(std::move(help)), severity(weight) {}
  const Outcome outcome;
  const std::string fix;                   ///< empty: the rule's own
  const std::optional<Severity> severity;  ///< empty: the rule's own
};

/// A plug-in in a child. Each step is recorded before the plug-in is called, so that the parent knows
/// where the child ended. A step that is known to be bad is not taken. Throws an `EarlyEnd` when the
/// check cannot go on, also when the plug-in throws.
class WatchedPlugin final : public IRngProvider {
 public:
  explicit WatchedPlugin(CheckOrder checkOrder)
      : order(std::move(checkOrder)), begin(std::chrono::steady_clock::now()) {}

  const PluginFile& File() const { return order.plugin; }
  /// How long each call may take.
  std::chrono::milliseconds Limit() const { return std::chrono::seconds(order.seconds); }
  /// Draws are known to wait for a user or a device.
  bool DrawsWait() const { return order.drawsWait; }
  /// Random bytes, the same for all processes of a run of `rngctl`.
  const std::string& RunKey() const { return order.runKey; }
  /// Hashes of what an earlier process drew; empty in the first.
  const std::string& EarlierBlocks() const { return order.earlierBlocks; }

  /// Open and close it as the aggregator does.
  void Open();
  bool Make();  ///< calls the factory; false when that returns null
  void Close();

  /// Opens it, calls the factory and passes these settings to the object. Returns what `IsAvailable`
  /// returns.
  bool StartWithNull();
  bool StartWithEmpty(IRngSettings& settings);
  bool StartWithBuiltIn();
  void StartAvailable();  ///< ends the check when it is not available
  bool StartMade();       ///< the rest of a start with the built-in settings, after Make
  void Stop();

  /// Calls `IsAvailable` again. This is a step of its own, because a fault in it does not prevent a
  /// start.
  bool IsAvailableInUse();

  /// Records a step. An own step is what the check is about.
  void BeginStep(Step step) { RecordStep(step, false); }
  void BeginOwnStep(Step step) { RecordStep(step, true); }
  bool IsGood(Step step) const { return !order.badSteps.contains(step); }

  /// All calls between the two, from any thread, belong to one own step of the check.
  void BeginLongStep(Step step);
  void EndLongStep() { isInLongStep = false; }

  /// How long a draw may take before it counts as waiting for a user or a device.
  std::chrono::milliseconds Patience() const { return Limit() / 4; }
  /// Ends a check of many calls, each of which may be slow, once they take longer than one call may.
  void RequireTime() const;

  /// Ends the check as failed, with this fault, because a draw failed. Perhaps the source only ran out:
  /// the fault counts only if the same draws succeed alone in a fresh process, or, where self-tests are
  /// not at fault, after the same number of those.
  [[noreturn]] void FailUnlessRunOut(const std::string& fault, bool repeatsSelfTests);

  std::int32_t GetName(char* buffer) override;
  std::int32_t GetDescription(char* buffer) override;
  std::int32_t GetHardwareId(char* buffer) override;
  bool SelectDevice(const char* hardwareId) override;
  bool Generate(void* buffer, std::size_t size) override;
  bool IsAvailable() override;
  bool SelfTest() override;
  void Cancel() override;
  std::uint32_t GetFlags() override;
  void SetSettings(IRngSettings* settings) override;
  void Release() override;

  /// The optional function of the library, not of the provider; 0 if there is none.
  std::int32_t GetReport(char* buffer);

 private:
  void RecordStep(Step step, bool isOwn);
  void LookForThreads();
  bool StartWith(IRngSettings* settings, Step toSet, Step toAsk);
  template <typename Call>
  auto Watch(Step step, Call call);
  void Count(const std::function<void(SourceCalls&)>& call);

  const CheckOrder order;
  const std::chrono::steady_clock::time_point begin;
  Step settingsStep = Step::kSetSettings;  // of the start in progress
  Step availableStep = Step::kIsAvailable;
  std::atomic<bool> isInLongStep = false;
  std::set<std::string> threadsBefore = {};  // those that ran before it was first opened
  bool hasLookedForThreads = false;
  std::mutex counting;
  SourceCalls sourceCalls = {};
  void* handle = nullptr;
  IRngProvider* provider = nullptr;
};

/// Ends the check as failed, with this fault, unless `isSo`.
inline void Require(bool isSo, const std::string& fault, const std::string& fix = "") {
  if (!isSo) throw EarlyEnd(Outcome::kFailed, fault, fix);
}

#endif
