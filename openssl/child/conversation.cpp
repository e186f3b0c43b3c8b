#include "openssl/child/conversation.h"

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

// The process that has started this one, as a descriptor that becomes readable at its end. Forked copies of it may keep
// its socket open after that.
int OpenHost() {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (::getsockopt(kOrphanSocket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return -1;
  return static_cast<int>(::syscall(SYS_pidfd_open, peer.pid, 0));
}

void EndWith(int host) {
  pollfd ends[] = {{kOrphanSocket, POLLRDHUP, 0}, {host, POLLIN, 0}};
  while (::poll(ends, std::size(ends), -1) <= 0) continue;
  ::shutdown(kOrphanSocket, SHUT_RDWR);  // the main thread now stops the library
  ::sleep(2);
  ::_exit(1);  // a plug-in does not return
}

bool Send(const void* bytes, std::size_t size) {
  const auto* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t sent = ::send(kOrphanSocket, next, size, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) return false;
    if (sent > 0) {
      next += sent;
      size -= static_cast<std::size_t>(sent);
    }
  }
  return true;
}

}  // namespace

Conversation::Conversation() {
  const int host = OpenHost();
  if (host < 0) {
    throw std::runtime_error(
        "This program is started by OpenSSL's provider \"rngaggregator\". Run \"rngctl read\" "
        "instead.");
  }
  std::thread(EndWith, host).detach();
}

// The host finds the end of the conversation even if another process has this socket open, too.
Conversation::~Conversation() { ::shutdown(kOrphanSocket, SHUT_RDWR); }

// NOLINTBEGIN(readability-convert-member-functions-to-static): only a conversation has the socket
std::optional<ProviderRequest> Conversation::Receive() const {
  ProviderRequest request;
  if (::recv(kOrphanSocket, &request, sizeof request, MSG_WAITALL) != sizeof request) return {};
  if (request.size == 0 || request.size > kLargestDraw) return {};
  for (DrawText* text : {&request.choice.kind, &request.choice.hardwareId, &request.choice.from}) {
    text->text[sizeof text->text - 1] = 0;
  }
  return request;
}

// If it cannot be sent, the host is gone, and the next request does not come.
void Conversation::Answer(const ProviderRequest& request, DrawAnswer::Result result,
                          const std::string& text, Reply& reply) const {
  reply.answer = {request.number, result, {}};
  text.copy(reply.answer.text.text, sizeof reply.answer.text.text - 1);
  if (result != DrawAnswer::kDrawn) ::explicit_bzero(reply.bytes, request.size);
  Send(&reply, sizeof reply.answer + request.size);
  ::explicit_bzero(reply.bytes, request.size);
}
// NOLINTEND(readability-convert-member-functions-to-static)
