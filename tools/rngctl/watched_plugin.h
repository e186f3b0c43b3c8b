#ifndef TOOLS_RNGCTL_WATCHED_PLUGIN_H
#define TOOLS_RNGCTL_WATCHED_PLUGIN_H

#include "check_report.h"

#include <atomic>
#include <chrono>
#include <set>
#include <stdexcept>
#include <string>

#include <rngaggregator/provider.h>

/// Steps that are no operations of an object.
inline constexpr char kOpening[] = "the opening of the library";
inline constexpr char kFactory[] = "the factory";
inline constexpr char kClosing[] = "the closing of the library";

/// What a child is told about the plug-in that it examines.
struct PluginUnderCheck {
  std::string path;
  std::string factory;
  std::string kind;                 ///< the catalogue's name for the file, or empty
  std::chrono::milliseconds limit;  ///< for each call
  std::set<std::string> badSteps;   ///< known to end the process or to throw
  bool drawsWait;                   ///< known to wait for a user or a device
};

/// The check ends here, with this outcome.
class EarlyEnd : public std::runtime_error {
 public:
  EarlyEnd(Outcome how, const std::string& seen, std::string help = "")
      : std::runtime_error(seen), outcome(how), mend(std::move(help)) {}
  const Outcome outcome;
  const std::string mend;  ///< empty where the check's own fits
};

/// A plug-in in a child. Before it is called the child reports the step, so that the parent knows
/// where the child ended; a step that is known to be bad is not taken. Throws an `EarlyEnd` where the
/// check cannot go on, also when the plug-in throws.
class WatchedPlugin final : public IRngProvider {
 public:
  explicit WatchedPlugin(PluginUnderCheck plugin)
      : subject(std::move(plugin)), begin(std::chrono::steady_clock::now()) {}

  const PluginUnderCheck& Subject() const { return subject; }

  /// As the aggregator opens it, and as it closes it.
  void Open();
  bool Make();  ///< calls the factory; false when that gives nothing
  void Close();

  /// Opens it, makes the object and hands it settings. Returns what `IsAvailable` answers. `note` is
  /// added to the names of these steps.
  bool StartWith(IRngSettings* settings, const std::string& note);
  bool StartWithBuiltIn();
  void StartAvailable();  ///< the check ends when it is not
  bool StartMade();       ///< what is left of the start when the object is made
  void Stop();

  /// Asks once more for availability: a step of its own, as a fault there does not keep it from being
  /// started.
  bool AskAgain();

  /// Reports a step; one of the check's own is what the check is about.
  void Step(const std::string& name);
  void OwnStep(const std::string& name);
  bool IsGood(const std::string& step) const { return !subject.badSteps.contains(step); }

  /// All calls up to the end, from whatever threads, belong to one step of the check's own.
  void BeginLongStep(const std::string& name);
  void EndLongStep() { isInLongStep = false; }

  /// How long a draw is waited for, before it counts as waiting for a user or a device.
  std::chrono::milliseconds Patience() const { return subject.limit / 4; }
  /// A check of many calls, of which each may be slow, ends when as much time is over as is meant for
  /// one.
  void RequireTime() const;

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

 private:
  void ReportStep(const std::string& name, bool isOwn);
  template <typename Call>
  auto Watch(const std::string& step, Call call);

  const PluginUnderCheck subject;
  const std::chrono::steady_clock::time_point begin;
  std::string settingsNote;  // ends the names of the steps of a start
  std::atomic<bool> isInLongStep = false;
  void* handle = nullptr;
  IRngProvider* provider = nullptr;
};

/// The check ends when the plug-in's answer to a request is not as it must be.
inline void Require(bool isSo, const std::string& fault, const std::string& mend = "") {
  if (!isSo) throw EarlyEnd(Outcome::kFailed, fault, mend);
}

#endif
