#include "turns.h"

std::uint64_t Turns::Cancels() {
  const std::lock_guard<std::mutex> guard(lock);
  return cancels;
}

void Turns::Cancel() {
  const std::lock_guard<std::mutex> guard(lock);
  ++cancels;
  change.notify_all();
}

Turn::Turn(Turns& all, std::uint64_t before) : turns(all), cancelsBefore(before) {
  Guard guard(turns.lock);
  Enter(guard);
}

Turn::~Turn() {
  const Guard guard(turns.lock);
  if (!isMine) return;
  ++turns.ends;
  Leave();
}

bool Turn::IsCancelled() const {
  const Guard guard(turns.lock);
  return turns.cancels != cancelsBefore;
}

void Turn::Enter(Guard& guard) {
  const auto isCancelled = [this] { return turns.cancels != cancelsBefore; };
  turns.change.wait(guard, [&] {
    return isCancelled() ||
           (turns.users < turns.limit && !turns.isExclusive && turns.exclusiveWaiters == 0);
  });
  isMine = !isCancelled();
  endsBefore = turns.ends;
  if (isMine) ++turns.users;
}

void Turn::Leave() {
  isMine = false;
  --turns.users;
  turns.change.notify_all();
}

bool Turn::WaitForAnother() {
  Guard guard(turns.lock);
  // One that has ended since this turn was granted may have been the only other.
  if (turns.users < 2 && turns.ends == endsBefore) return false;
  Leave();
  turns.change.wait(guard,
                    [&] { return turns.ends != endsBefore || turns.cancels != cancelsBefore; });
  Enter(guard);
  return isMine;
}

bool Turn::RunExclusively(const std::function<void()>& function) {
  Guard guard(turns.lock);
  Leave();  // otherwise, two such calls would wait for each other forever
  ++turns.exclusiveWaiters;
  turns.change.wait(guard, [this] {
    return turns.cancels != cancelsBefore || (turns.users == 0 && !turns.isExclusive);
  });
  --turns.exclusiveWaiters;
  if (turns.cancels != cancelsBefore) {
    turns.change.notify_all();
    return false;
  }
  isMine = turns.isExclusive = true;
  ++turns.users;
  guard.unlock();
  function();
  guard.lock();
  turns.isExclusive = false;
  turns.change.notify_all();
  return true;
}
