#ifndef RNG_TOKEN_TURNS_H
#define RNG_TOKEN_TURNS_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

/// Decides which threads may use the modules. Threads: any.
///
/// `Cancel` ends every wait that began before it.
class Turns {
 public:
  explicit Turns(bool oneAtATime) : limit(oneAtATime ? 1 : UINT32_MAX) {}

  /// How many times `Cancel` was called. A wait ends when this number changes.
  std::uint64_t Cancels();
  void Cancel();

 private:
  friend class Turn;

  const std::uint32_t limit;
  std::mutex lock;
  std::condition_variable change;
  std::uint32_t users = 0;
  std::uint32_t exclusiveWaiters = 0;
  bool isExclusive = false;
  std::uint64_t ends = 0;  // how many turns have ended
  std::uint64_t cancels = 0;
};

/// The right to use the modules, from the constructor to the destructor.
class Turn {
 public:
  Turn(Turns& all, std::uint64_t before);
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn();

  /// Whether it was granted. It is not granted after `Cancel`.
  bool IsMine() const { return isMine; }
  bool IsCancelled() const;

  /// Waits until one of the other turns has ended since this one was granted or last waited. Returns false if none has
  /// and there is no other. After `Cancel`, returns false, and this turn has ended.
  bool WaitForAnother();

  /// Waits until all other turns have ended, keeps new ones waiting, and calls the function, which must not throw.
  /// After `Cancel`, returns false without the call, and this turn has ended.
  bool RunExclusively(const std::function<void()>& function);

 private:
  using Guard = std::unique_lock<std::mutex>;

  void Enter(Guard& guard);
  void Leave();

  Turns& turns;
  const std::uint64_t cancelsBefore;
  std::uint64_t endsBefore = 0;
  bool isMine = false;
};

#endif
