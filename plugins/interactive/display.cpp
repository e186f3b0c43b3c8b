#include "plugins/interactive/display.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// EAGAIN: the queue of connections is full, because the server is busy.
bool Listens(const std::string& path) {
  sockaddr_un address = {};
  if (path.size() > sizeof address.sun_path) return false;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return false;
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  const bool listens =
      ::connect(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0 || errno == EAGAIN;
  ::close(socket);
  return listens;
}

std::string Display() {
  const char* const display = std::getenv("DISPLAY");
  return display ? display : "";
}

}  // namespace

// DISPLAY is HOST:NUMBER or HOST:NUMBER.SCREEN. Without a host, the server listens on this machine: on an
// abstract socket, and on one with the same name in the file system.
bool HasDisplay() {
  const std::string display = Display();
  const std::size_t colon = display.rfind(':');
  if (colon == std::string::npos) return false;
  if (colon != 0 && display.compare(0, colon, "unix") != 0) return true;
  const std::string number = display.substr(colon + 1, display.find('.', colon) - colon - 1);
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return false;
  const std::string path = "/tmp/.X11-unix/X" + number;
  return Listens('\0' + path) || Listens(path);
}

std::string FindProblemOfDisplay() {
  if (HasDisplay()) return "";
  const std::string where =
      Display().empty() ? "DISPLAY is not set" : "no X server answers at the address in DISPLAY";
  return "There is no display: " + where +
         ". Run the program in the graphical session of its user.";
}
