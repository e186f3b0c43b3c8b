#include "openssl/module/connection.h"

#include "openssl/module/helper_process.h"

#include <cstring>
#include <pthread.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr time_t kLongestDraw = 60;  // seconds

// A thread that is cancelled during a draw would leave locks held, ours and OpenSSL's.
class NoCancellation {
 public:
  NoCancellation() { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before); }
  NoCancellation(const NoCancellation&) = delete;
  NoCancellation& operator=(const NoCancellation&) = delete;
  ~NoCancellation() { ::pthread_setcancelstate(before, nullptr); }

 private:
  int before = 0;
};

class LockUntil {
 public:
  LockUntil(pthread_mutex_t& lock, const Deadline& deadline)
      : mutex(lock),
        isHeld(::pthread_mutex_clocklock(&lock, CLOCK_MONOTONIC, &deadline.Get()) == 0) {}
  LockUntil(const LockUntil&) = delete;
  LockUntil& operator=(const LockUntil&) = delete;
  ~LockUntil() {
    if (isHeld) ::pthread_mutex_unlock(&mutex);
  }
  bool IsHeld() const { return isHeld; }

 private:
  pthread_mutex_t& mutex;
  const bool isHeld;
};

}  // namespace

// All zeros are a free lock and a helper that is not started. The kernel zeroes this page in a child process after a
// fork, so that is what the child finds.
struct Connection::State {
  pthread_mutex_t lock;
  HelperProcess program;
  DrawText generator;  // of the last draw
};

Connection::Connection() {
  void* const page =
      ::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) return;
  if (::madvise(page, sizeof(State), MADV_WIPEONFORK) == 0) {
    state = static_cast<State*>(page);
  } else {
    ::munmap(page, sizeof(State));
  }
}

Connection::~Connection() {
  if (!state) return;
  CloseInherited();
  state->program.Stop();
  ::munmap(state, sizeof(State));
}

// Closes the parent's socket at the first draw after a fork. The parent continues to use its own descriptor.
void Connection::CloseInherited() {
  if (!state->program.socket.WasOpened() && opened.IsStillThis()) ::close(opened.descriptor);
}

bool Connection::DrawLocked(const ProviderParameters& choice, void* buffer, std::size_t size,
                            const Deadline& deadline, DrawText& reason) {
  if (isAlarmed) {
    reason = alarm;
    return false;
  }
  HelperProcess& program = state->program;
  if (!program.IsRunning()) {
    CloseInherited();
    program.Stop();
    if (!program.Start(reason)) return false;
    opened = program.socket;
  }
  DrawText text;
  const DrawAnswer::Result result = program.Ask(choice, buffer, size, deadline, text);
  if (result == DrawAnswer::kRefused) {
    alarm = text;
    isAlarmed = true;
  }
  const bool isDrawn = result == DrawAnswer::kDrawn;
  (isDrawn ? state->generator : reason) = text;
  return isDrawn;
}

DrawText Connection::LastGenerator() {
  if (!state) return {};
  const LockUntil lock(state->lock, Deadline(kLongestDraw));
  return lock.IsHeld() ? state->generator : DrawText{};
}

bool Connection::Draw(const ProviderParameters& choice, void* buffer, std::size_t size,
                      DrawText& reason) {
  const NoCancellation noCancellation;
  const Deadline deadline(kLongestDraw);
  if (::getauxval(AT_SECURE) != 0) {
    return Fail(reason,
                "Programs with more privileges than their user (set-user-ID, set-group-ID or "
                "capabilities) get no random bytes from this provider.");
  }
  if (!state) {
    return Fail(reason,
                "No memory could be allocated that the kernel zeroes in child processes. This "
                "needs Linux 4.14 or later.");
  }
  const LockUntil lock(state->lock, deadline);
  if (lock.IsHeld()) return DrawLocked(choice, buffer, size, deadline, reason);
  return Fail(reason,
              "Draws in other threads have not finished within a minute. Run \"rngctl doctor\".");
}
