#ifndef RNGAGGREGATOR_CHECKED_RNG_H
#define RNGAGGREGATOR_CHECKED_RNG_H

/// \file
/// Draws that are checked: a provider for hosts, and the check itself for plug-ins.
///
///     CheckedRng rng(GetRng("dsdr"));
///     if (!rng.Generate(key, sizeof key)) ...   // failed, or the bytes are evidently not random
///
/// The check finds the most common defects of hardware generators and their drivers: a draw that reports success
/// but leaves all or part of the buffer unfilled, and 16 bytes that repeat the 16 before them. It does not
/// find repetitions at other distances: the same 32 bytes in each draw can pass. "rngctl check" looks for
/// those. Nor can it show that bytes are unpredictable; see health.h.

#include <atomic>

#include <rngaggregator/health.h>
#include <rngaggregator/provider.h>

/// Runs the tests of health.h on all the bytes of one source, as one stream.
///
/// After an alarm, all draws fail until `Reset`. Good bytes raise an alarm with a probability of less than 10^-6
/// per terabyte. This object keeps the last 16 bytes that were drawn until it is reset or destroyed.
///
/// Threads: any. Never waits for another thread: if a draw ends while another thread's bytes are being tested, its
/// bytes are tested separately from the stream. So a forked copy of the process can draw, too, whatever other threads
/// did during the fork.
class RngDrawCheck {
 public:
  RngDrawCheck() = default;
  RngDrawCheck(const RngDrawCheck&) = delete;
  RngDrawCheck& operator=(const RngDrawCheck&) = delete;

  /// What raised the alarm, if there was one.
  RngHealthAlarm Alarm() const { return alarm; }

  /// What an alarm of these tests means, for messages to the user; "" for `kNone`. The text is a constant.
  static const char* Describe(RngHealthAlarm alarm) {
    switch (alarm) {
      case RngHealthAlarm::kRepetition:
        return "nine equal bytes in a row";
      case RngHealthAlarm::kProportion:
        return "one value far too often in 512 bytes";
      case RngHealthAlarm::kBlock:
        return "16 bytes equal to the 16 before them";
      case RngHealthAlarm::kNone:
        break;
    }
    return "";
  }

  /// Forgets the alarm and the stream so far.
  void Reset() {
    isOutdated = true;
    const Claim claim(isTesting);
    if (claim.isGranted) ForgetIfOutdated();
    alarm = RngHealthAlarm::kNone;
  }

  /// Zeroes `size` bytes at `buffer`, calls `draw()` to fill them, and tests them. An unfilled tail of 9 bytes or more
  /// therefore raises an alarm.
  ///
  /// Returns true when `draw` has returned true and there is no alarm. Otherwise, also when `draw` throws, the
  /// buffer holds zeros. A draw of 0 bytes calls `draw` as well; only then may `buffer` be null.
  template <typename Draw>
  bool Run(void* buffer, std::size_t size, const Draw& draw) {
    if (alarm != RngHealthAlarm::kNone) {
      if (size != 0) std::memset(buffer, 0, size);
      return false;
    }
    if (size == 0) return draw();
    Eraser eraser(buffer, size);
    eraser.isNeeded = !draw() || !Feed(buffer, size);
    return !eraser.isNeeded;
  }

 private:
  // Zeroes a buffer at once, and again at the end unless that is not needed.
  struct Eraser {
    Eraser(void* bytes, std::size_t count) : buffer(bytes), size(count) {
      std::memset(buffer, 0, size);
    }
    Eraser(const Eraser&) = delete;
    Eraser& operator=(const Eraser&) = delete;
    ~Eraser() {
      if (isNeeded) std::memset(buffer, 0, size);
    }
    void* const buffer;
    const std::size_t size;
    bool isNeeded = true;
  };

  // The right to use the test of the stream, if no other thread has it.
  struct Claim {
    explicit Claim(std::atomic<bool>& taken)
        : isTaken(taken), isGranted(!taken.exchange(true, std::memory_order_acquire)) {}
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim() {
      if (isGranted) isTaken.store(false, std::memory_order_release);
    }
    std::atomic<bool>& isTaken;
    const bool isGranted;
  };

  bool Feed(const void* bytes, std::size_t size) {
    const Claim claim(isTesting);
    if (claim.isGranted) {
      ForgetIfOutdated();
      return FeedTo(test, bytes, size);
    }
    RngHealthTest alone(Cutoffs());
    return FeedTo(alone, bytes, size);
  }

  bool FeedTo(RngHealthTest& used, const void* bytes, std::size_t size) {
    const bool isGood = used.Feed(bytes, size);
    if (!isGood) alarm = used.Alarm();
    // Not the alarm alone: another thread may have reset it just now.
    return isGood && alarm == RngHealthAlarm::kNone;
  }

  void ForgetIfOutdated() {
    if (isOutdated && isOutdated.exchange(false)) test.Reset();
  }

  static RngHealthCutoffs Cutoffs() { return {9, 23, 512, true}; }

  RngHealthTest test{Cutoffs()};
  std::atomic<bool> isTesting{false};
  std::atomic<bool> isOutdated{false};  // Reset was called while another thread used the test
  std::atomic<RngHealthAlarm> alarm{RngHealthAlarm::kNone};
};

/// Checks the draws of a provider, and passes every other operation on to it.
///
/// Ownership: borrows the provider, which must not be null and must stay loaded as long as this object is
///            used. `SetSettings` and `Release` do nothing: only the aggregator calls them.
/// Threads:   as the provider's; draws may be concurrent.
class CheckedRng final : public IRngProvider {
 public:
  /// Calls nothing yet.
  explicit CheckedRng(IRngProvider* provider) : rng(*provider) {}
  CheckedRng(const CheckedRng&) = delete;
  CheckedRng& operator=(const CheckedRng&) = delete;

  /// What raised the alarm, if there was one. Threads: any.
  RngHealthAlarm Alarm() const { return check.Alarm(); }

  /// Forgets the alarm and the stream so far. Threads: any.
  void Reset() { check.Reset(); }

  /// Returns true when the provider has drawn the whole buffer and there is no alarm. Otherwise, also when
  /// the provider throws, the buffer holds zeros.
  bool Generate(void* buffer, std::size_t size) override {
    return check.Run(buffer, size, [this, buffer, size] { return rng.Generate(buffer, size); });
  }

  std::int32_t GetName(char* buffer) override { return rng.GetName(buffer); }
  std::int32_t GetDescription(char* buffer) override { return rng.GetDescription(buffer); }
  std::int32_t GetHardwareId(char* buffer) override { return rng.GetHardwareId(buffer); }
  bool SelectDevice(const char* hardwareId) override { return rng.SelectDevice(hardwareId); }
  bool IsAvailable() override { return rng.IsAvailable(); }
  bool SelfTest() override { return rng.SelfTest(); }
  void Cancel() override { rng.Cancel(); }
  std::uint32_t GetFlags() override { return rng.GetFlags(); }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}

 private:
  IRngProvider& rng;
  RngDrawCheck check;
};

#endif
