#include "helpers/session/session.h"

#include "helpers/gathering/self_test.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

bool IsReadable(int descriptor) {
  pollfd wait = {descriptor, POLLIN, 0};
  return ::poll(&wait, 1, 0) == 1;
}

std::atomic<bool> g_isExiting = false;

// The thread that watches the socket sees this, too. The exit that has begun has the status that counts.
void CloseSocket() {
  g_isExiting = true;
  ::shutdown(kHelperSocket, SHUT_RDWR);
}

// A piece is so small that the socket takes all of it or waits.
bool Send(const unsigned char* bytes, std::size_t size) {
  return TEMP_FAILURE_RETRY(::send(kHelperSocket, bytes, size, MSG_NOSIGNAL)) ==
         static_cast<ssize_t>(size);
}

}  // namespace

Session::Session() {
  ::prctl(PR_SET_DUMPABLE, 0);
  std::atexit(CloseSocket);
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (::getsockopt(kHelperSocket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
      ::recv(kHelperSocket, &request, sizeof request, MSG_WAITALL) != sizeof request) {
    throw std::runtime_error("This program is started by a plug-in. Run \"rngctl read\" instead.");
  }
  process = peer.pid;
  host = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
  if (host < 0) throw std::runtime_error("The program that asked for random bytes has exited.");
}

Session::~Session() { ::close(host); }

bool Session::HasEnded() const { return IsReadable(kHelperSocket) || IsReadable(host); }

void Session::ExitAtEnd() const {
  std::thread([host = host] {
    pollfd ends[] = {{kHelperSocket, POLLIN, 0}, {host, POLLIN, 0}};
    while (::poll(ends, std::size(ends), -1) <= 0) continue;
    if (!g_isExiting) Exit(0);
  }).detach();
}

void Session::Exit(int status) {
  CloseSocket();
  ::_exit(status);
}

// The state follows the program's name, which is in parentheses and may itself contain any character.
bool Session::IsHostStopped() const {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t end = line.rfind(") ");
  return end != std::string::npos && line[end + 2] == 'T';
}

bool Session::Answer(HmacDrbg&& generator) const {
  std::array<unsigned char, 4096> piece;
  bool isWanted = true;
  for (std::uint64_t done = 0; isWanted && done < request.size;) {
    const std::size_t part =
        static_cast<std::size_t>(std::min<std::uint64_t>(request.size - done, piece.size()));
    generator.Generate(piece.data(), part);
    isWanted = Send(piece.data(), part);
    done += part;
  }
  ::explicit_bzero(piece.data(), piece.size());
  return isWanted;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): only a session has a socket
void Session::AnswerSelfTest() const {
  if (TestGathering()) Send(&kHelperPassed, 1);
}

// Not MCL_FUTURE: under a low limit, the process would soon get no more memory. If even this exceeds the limit, the
// call fails, which is no reason to refuse a draw.
SystemBytes DrawSystemBytes() {
  ::mlockall(MCL_CURRENT);
  SystemBytes bytes;
  if (::getentropy(bytes.data(), bytes.size()) != 0) {
    throw std::runtime_error("The system's random-number generator failed.");
  }
  return bytes;
}
