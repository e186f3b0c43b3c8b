#include "openssl/module/helper_process.h"

#include "plugins/interactive/start_orphan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr const char* kProgram = "/" RNG_HELPERS_FROM_MODULE "/rng-openssl-draw";

constexpr const char* kHasTerminated =
    "The helper program rng-openssl-draw has terminated. Run \"rngctl doctor\" to find out why.";

// A path on the heap. Two paths on the stack would not fit into the small stacks that some programs give their threads.
class Path {
 public:
  explicit Path(char* allocated) : text(allocated) {}
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;
  ~Path() { std::free(text); }
  const char* Get() const { return text ? text : ""; }

 private:
  char* const text;
};

// The path is relative to this module, so that an installation can be moved, and OpenSSL can load the module through a
// symbolic link. Null if memory runs out.
char* FindProgram(const char* module) {
  const Path resolved(::realpath(module, nullptr));
  const char* const file = *resolved.Get() ? resolved.Get() : module;
  const auto length = static_cast<int>(std::strrchr(file, '/') - file);
  char* found = nullptr;
  if (::asprintf(&found, "%.*s%s", length, file, kProgram) < 0) return nullptr;
  char* const program = ::realpath(found, nullptr);
  if (!program) return found;  // for the message
  std::free(found);
  return program;
}

// If the host has closed a standard stream, the socket must not take its place: the host would print into it.
int MoveFromStandardStreams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  ::close(descriptor);
  return moved;
}

void Skip(iovec& part, std::size_t& size) {
  const std::size_t skipped = std::min(part.iov_len, size);
  part.iov_base = static_cast<char*>(part.iov_base) + skipped;
  part.iov_len -= skipped;
  size -= skipped;
}

// The two parts usually arrive together. A signal handler of the host may fork while this waits. In the child process,
// the kernel has then zeroed the state, and the child must not take the parent's answer.
bool Receive(const Socket& socket, iovec (&parts)[2], const Deadline& deadline, DrawText& text) {
  while (parts[1].iov_len > 0) {
    pollfd event = {socket.descriptor, POLLIN, 0};
    if (::poll(&event, 1, deadline.MillisecondsLeft()) == 0) {
      return Fail(
          text,
          "The generator has not answered for a minute. Run \"rngctl doctor\" to find out why.");
    }
    if (!socket.WasOpened()) return Fail(text, "The process was forked during this draw.");
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = std::size(parts);
    const ssize_t count = ::recvmsg(socket.descriptor, &message, MSG_DONTWAIT);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0) return Fail(text, kHasTerminated);
    auto received = static_cast<std::size_t>(count);
    for (iovec& part : parts) Skip(part, received);
  }
  return true;
}

}  // namespace

bool Fail(DrawText& text, const char* reason) {
  std::snprintf(text.text, sizeof text.text, "%s", reason);
  return false;
}

bool Socket::IsStillThis() const {
  struct stat now = {};
  return ::fstat(descriptor, &now) == 0 && now.st_dev == device && now.st_ino == inode;
}

// Nothing arrives between two draws. If something does, the helper has terminated or cannot be trusted.
bool HelperProcess::IsRunning() const {
  if (!socket.IsStillThis()) return false;
  char byte = 0;
  return ::recv(socket.descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) < 0 &&
         errno == EAGAIN;
}

bool HelperProcess::Start(DrawText& text) {
  Dl_info module = {};
  if (!::dladdr(kProgram, &module) || !module.dli_fname || *module.dli_fname != '/') {
    return Fail(
        text,
        "OpenSSL loaded this provider's module from a relative path. Give its absolute path in "
        "OpenSSL's configuration.");
  }
  const Path path(FindProgram(module.dli_fname));
  socket.descriptor = MoveFromStandardStreams(
      ::access(path.Get(), X_OK) == 0 ? StartOrphan(path.Get(), ::environ) : -1);
  struct stat now = {};
  if (socket.descriptor < 0 || ::fstat(socket.descriptor, &now) != 0) {
    std::snprintf(text.text, sizeof text.text, "The helper program cannot be started: %.400s: %s",
                  path.Get(), std::strerror(errno));
    return false;
  }
  socket.device = now.st_dev;
  socket.inode = now.st_ino;
  return true;
}

void HelperProcess::Stop() const {
  if (!socket.IsStillThis()) return;
  ::shutdown(socket.descriptor, SHUT_RDWR);  // also ends it in child processes that inherited it
  ::close(socket.descriptor);
}

DrawAnswer::Result HelperProcess::Exchange(const ProviderParameters& choice, void* buffer,
                                           std::size_t size, const Deadline& deadline,
                                           DrawText& text) {
  const ProviderRequest request = {++requests, static_cast<std::uint32_t>(size), choice};
  // Does not block: the socket's buffer is empty, and has room for more than one request.
  if (::send(socket.descriptor, &request, sizeof request, MSG_NOSIGNAL | MSG_DONTWAIT) !=
      sizeof request) {
    Fail(text, kHasTerminated);
    return DrawAnswer::kFailed;
  }
  DrawAnswer answer = {};
  iovec parts[] = {{&answer, sizeof answer}, {buffer, size}};
  if (!Receive(socket, parts, deadline, text)) return DrawAnswer::kFailed;
  if (answer.number != request.number) {
    Fail(text, "The helper program rng-openssl-draw sent an unexpected answer.");
    return DrawAnswer::kFailed;
  }
  text = answer.text;
  text.text[sizeof text.text - 1] = 0;
  return answer.result;
}

DrawAnswer::Result HelperProcess::Ask(const ProviderParameters& choice, void* buffer,
                                      std::size_t size, const Deadline& deadline, DrawText& text) {
  const DrawAnswer::Result result = Exchange(choice, buffer, size, deadline, text);
  if (result != DrawAnswer::kDrawn) Stop();
  return result;
}
