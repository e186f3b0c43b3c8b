#include "openssl/module/connection.h"

#include "openssl/module/drawing_program.h"

#include <cstdio>
#include <cstring>
#include <pthread.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr time_t kLongestDraw = 60;  // seconds

bool Fail(DrawText& reason, const char* sentence) {
  std::snprintf(reason.text, sizeof reason.text, "%s", sentence);
  return false;
}

// A thread that ended in the middle of a draw would leave locks behind, ours and OpenSSL's.
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

// All zero, it is a lock that nobody holds and a program that is not started. The kernel clears it in a forked copy of
// the process, so the copy finds just that.
struct Connection::State {
  pthread_mutex_t lock;
  DrawingProgram program;
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

// The socket of the original, in a forked copy that is used for the first time. The original goes on using it.
void Connection::CloseInherited() {
  if (!state->program.socket.isOpen && opened.IsStillThis()) ::close(opened.descriptor);
  opened.isOpen = false;
}

bool Connection::DrawLocked(const ProviderParameters& choice, void* buffer, std::size_t size,
                            const Deadline& deadline, DrawText& reason) {
  DrawingProgram& program = state->program;
  if (!program.IsRunning()) {
    CloseInherited();
    program.Stop();
    if (!program.Start(reason)) return false;
    opened = program.socket;
  }
  DrawText text;
  const bool isDrawn = program.Ask(choice, buffer, size, deadline, text);
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
                "Programs with more rights than their user (set-user-ID, set-group-ID or "
                "capabilities) get no random bytes from this provider.");
  }
  if (!state)
    return Fail(
        reason,
        "No memory could be set up that forked copies do not share. This needs Linux 4.14.");
  const LockUntil lock(state->lock, deadline);
  if (!lock.IsHeld()) return Fail(reason, "Draws of other threads have taken a minute.");
  if (DrawLocked(choice, buffer, size, deadline, reason)) return true;
  ::explicit_bzero(buffer, size);
  return false;
}
