#include "openssl/helper/host_connection.h"

#include "plugins/interactive/start_orphan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// A descriptor for the process that started this one. It becomes readable when that process terminates. The end of the
// socket is not enough, because child processes of the host may keep it open.
int OpenHost() {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (::getsockopt(kOrphanSocket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return -1;
  return static_cast<int>(::syscall(SYS_pidfd_open, peer.pid, 0));
}

void TerminateWith(int host) {
  pollfd ends[] = {{kOrphanSocket, POLLRDHUP, 0}, {host, POLLIN, 0}};
  while (::poll(ends, std::size(ends), -1) <= 0) continue;
  ::shutdown(kOrphanSocket, SHUT_RDWR);  // the main thread now stops the library
  ::sleep(2);
  ::_exit(1);  // a plug-in has not returned
}

void Send(const void* bytes, std::size_t size) {
  const auto* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t sent = ::send(kOrphanSocket, next, size, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) return;
    if (sent > 0) {
      next += sent;
      size -= static_cast<std::size_t>(sent);
    }
  }
}

}  // namespace

HostConnection::HostConnection() {
  const int host = OpenHost();
  if (host < 0) {
    throw std::runtime_error(
        "OpenSSL's provider \"rngaggregator\" starts this program. To draw random bytes yourself, "
        "run \"rngctl read\".");
  }
  std::thread(TerminateWith, host).detach();
}

// Tells the host that the connection has ended, even if another process has this socket open, too.
HostConnection::~HostConnection() { ::shutdown(kOrphanSocket, SHUT_RDWR); }

// NOLINTBEGIN(readability-convert-member-functions-to-static): only the connection has the socket
std::optional<ProviderRequest> HostConnection::Receive() const {
  ProviderRequest request;
  if (::recv(kOrphanSocket, &request, sizeof request, MSG_WAITALL) != sizeof request) return {};
  if (request.size == 0 || request.size > kLargestDraw) return {};
  for (DrawText* text : {&request.choice.kind, &request.choice.hardwareId, &request.choice.from}) {
    text->text[sizeof text->text - 1] = 0;
  }
  return request;
}

// If sending fails, the host is gone. `Receive` then finds that out.
void HostConnection::Answer(const ProviderRequest& request, DrawAnswer::Result result,
                            const std::string& text, Reply& reply) const {
  reply.answer = {request.number, result, {}};
  text.copy(reply.answer.text.text, sizeof reply.answer.text.text - 1);
  if (result != DrawAnswer::kDrawn) ::explicit_bzero(reply.bytes, request.size);
  Send(&reply, sizeof reply.answer + request.size);
  ::explicit_bzero(reply.bytes, request.size);
}
// NOLINTEND(readability-convert-member-functions-to-static)
