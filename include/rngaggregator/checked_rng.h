#ifndef RNGAGGREGATOR_CHECKED_RNG_H
#define RNGAGGREGATOR_CHECKED_RNG_H

/// \file
/// A provider whose draws are checked, for hosts.
///
///     CheckedRng rng(GetRng("dsdr"));
///     if (!rng.Generate(key, sizeof key)) ...   // failed, or the bytes are evidently not random
///
/// It finds the most common defects of hardware generators and their drivers: a draw that reports success
/// but leaves all or part of the buffer unfilled, and 16 bytes that repeat the 16 before them. It does not
/// find repetitions at other distances: the same 32 bytes in each draw can pass. "rngctl check" looks for
/// those. Nor can it show that bytes are unpredictable; see health.h.

#include <mutex>

#include <rngaggregator/health.h>
#include <rngaggregator/provider.h>

/// Passes every operation on to a provider, and runs the tests of health.h on all that it draws, as one
/// stream of bytes.
///
/// `Generate` zeroes the buffer before it draws, so a tail of 9 bytes or more that the provider does not
/// fill raises an alarm. After an alarm, this draw and all later ones return false, with zeros in the buffer,
/// until `Reset`. Good bytes raise an alarm with a probability of less than 10^-6 per terabyte. This object
/// keeps the last 16 bytes that were drawn until it is reset or destroyed.
///
/// Ownership: borrows the provider, which must not be null and must stay loaded as long as this object is
///            used. `SetSettings` and `Release` do nothing: only the aggregator calls them.
/// Threads:   as the provider's; draws may be concurrent. Their bytes are tested in the order in which the
///            draws end.
class CheckedRng final : public IRngProvider {
 public:
  /// Calls nothing yet.
  explicit CheckedRng(IRngProvider* provider) : rng(*provider), test({9, 23, 512, true}) {}
  CheckedRng(const CheckedRng&) = delete;
  CheckedRng& operator=(const CheckedRng&) = delete;

  /// What raised the alarm, if there was one. Threads: any.
  RngHealthAlarm Alarm() const {
    const std::lock_guard<std::mutex> guard(lock);
    return test.Alarm();
  }

  /// Forgets the alarm and the stream so far. Threads: any.
  void Reset() {
    const std::lock_guard<std::mutex> guard(lock);
    test.Reset();
  }

  /// Returns true when the provider has drawn the whole buffer and there is no alarm. Otherwise, also when
  /// the provider throws, the buffer holds zeros.
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return Alarm() == RngHealthAlarm::kNone && rng.Generate(buffer, size);
    Eraser eraser(buffer, size);
    if (Alarm() != RngHealthAlarm::kNone || !rng.Generate(buffer, size)) return false;
    const std::lock_guard<std::mutex> guard(lock);
    eraser.isNeeded = !test.Feed(buffer, size);
    return !eraser.isNeeded;
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

  IRngProvider& rng;
  mutable std::mutex lock;  // never held during a draw
  RngHealthTest test;
};

#endif
