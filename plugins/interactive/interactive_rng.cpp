#include "plugins/interactive/interactive_rng.h"

#include "plugins/interactive/request.h"
#include "plugins/interactive/start_helper.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <sched.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::int32_t Report(const char* text, char* buffer) {
  const std::size_t size = std::strlen(text) + 1;
  if (buffer) std::memcpy(buffer, text, size);
  return static_cast<std::int32_t>(size);
}

bool CanStartHelper() { return !HasMoreRightsThanUser() && CheckHelper(FindHelper()) == 0; }

}  // namespace

// The right to ask the user. A draw takes a person half a minute, so it is enough to poll for the next turn.
class InteractiveRng::Turn {
 public:
  Turn(InteractiveRng& provider, std::uint64_t cancelsBefore) : rng(provider) {
    while (!(isMine = TryToTake()) && rng.cancels == cancelsBefore) ::usleep(20'000);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (isMine) rng.drawing = 0;
  }
  bool IsMine() const { return isMine; }

 private:
  // In a forked copy of the host, neither the turn nor the socket of the original counts.
  bool TryToTake() {
    pid_t owner = rng.drawing;
    const pid_t self = ::getpid();
    return owner != self && rng.drawing.compare_exchange_strong(owner, self);
  }

  InteractiveRng& rng;
  bool isMine = false;
};

// The connection with a helper.
class InteractiveRng::Helper {
 public:
  Helper(HelperRequest::Task task, std::uint64_t size, const std::atomic<std::uint64_t>& counter,
         std::uint64_t before)
      : descriptor(StartHelper(FindHelper().c_str())), cancels(counter), cancelsBefore(before) {
    const HelperRequest request = {task, 0, size};
    isAsked = descriptor >= 0 &&
              ::send(descriptor, &request, sizeof request, MSG_NOSIGNAL) == sizeof request;
  }
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;
  // The shutdown ends the connection even if a forked copy of the host keeps the socket open.
  ~Helper() {
    if (descriptor < 0) return;
    ::shutdown(descriptor, SHUT_RDWR);
    ::close(descriptor);
  }

  int Get() const { return descriptor; }

  bool Receive(unsigned char* buffer, std::size_t size) const {
    for (std::size_t done = 0; isAsked && done < size;) {
      if (!WaitForMore()) return false;
      const ssize_t count = TEMP_FAILURE_RETRY(::recv(descriptor, buffer + done, size - done, 0));
      if (count <= 0 || IsCancelled()) return false;
      done += static_cast<std::size_t>(count);
    }
    return isAsked;
  }

 private:
  using Clock = std::chrono::steady_clock;

  bool IsCancelled() const { return cancels != cancelsBefore; }

  // A helper that is cancelled has a second to restore the terminal and close the socket, so the terminal is
  // restored before the draw returns.
  bool WaitForMore() const {
    constexpr int kLook = 50;  // milliseconds
    Clock::time_point latest = Clock::time_point::max();
    do {
      pollfd event = {descriptor, POLLIN, 0};
      if (::poll(&event, 1, kLook) == 1) return true;
      if (IsCancelled()) latest = std::min(latest, Clock::now() + std::chrono::seconds(1));
    } while (Clock::now() < latest);
    return false;
  }

  const int descriptor;
  const std::atomic<std::uint64_t>& cancels;
  const std::uint64_t cancelsBefore;
  bool isAsked;
};

std::int32_t InteractiveRng::GetName(char* buffer) { return Report(kKind.name, buffer); }

std::int32_t InteractiveRng::GetDescription(char* buffer) {
  return Report(kKind.description, buffer);
}

bool InteractiveRng::IsAvailable() { return CanStartHelper() && kKind.canAsk(); }

bool InteractiveRng::Generate(void* buffer, std::size_t size) {
  if (size == 0) return true;
  const std::uint64_t cancelsBefore = cancels;
  const Turn turn(*this, cancelsBefore);
  if (turn.IsMine() && Draw(static_cast<unsigned char*>(buffer), size, cancelsBefore)) return true;
  std::memset(buffer, 0, size);
  return false;
}

bool InteractiveRng::Draw(unsigned char* buffer, std::size_t size, std::uint64_t cancelsBefore) {
  if (!IsAvailable()) return false;
  const Helper helper(HelperRequest::kDraw, size, cancels, cancelsBefore);
  // From here on, Cancel finds the socket. A Cancel before that shows in the count.
  const Connection own = {::getpid(), helper.Get()};
  connection = own;
  if (cancels != cancelsBefore) ::shutdown(helper.Get(), SHUT_WR);
  const bool isDrawn = helper.Receive(buffer, size) && cancels == cancelsBefore;
  // Cancel may have borrowed the socket in another thread. It must not be closed until Cancel returns it.
  for (Connection kept = own; !connection.compare_exchange_weak(kept, kNoConnection); kept = own) {
    ::sched_yield();
  }
  return isDrawn;
}

void InteractiveRng::Cancel() {
  ++cancels;
  Connection borrowed = connection;
  // In a forked copy of the host, the connection may be that of the original.
  if (borrowed.process != ::getpid() ||
      !connection.compare_exchange_strong(borrowed, kNoConnection)) {
    return;
  }
  // The helper sees this even if a forked copy of the host has the socket open.
  ::shutdown(borrowed.socket, SHUT_WR);
  connection = borrowed;
}

bool InteractiveRng::SelfTest() {
  if (!CanStartHelper()) return false;
  const std::atomic<std::uint64_t> none = 0;  // a Cancel is meant for draws
  const Helper helper(HelperRequest::kSelfTest, 0, none, none);
  unsigned char answer = 0;
  return helper.Receive(&answer, 1) && answer == kHelperPassed;
}
