#include "helpers/tty/terminal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Messages to the guard.
constexpr char kTaken = 't';
constexpr char kRestored = 'r';

// Outside the group of the front end, so that what kills the group spares it. SIGTTOU is blocked, because it
// is not in the foreground then.
[[noreturn]] void Guard(int pipe, int terminal, const termios& settings) {
  ::setpgid(0, 0);
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  // Nothing else stays open: the plug-in sees that the front end has ended when its socket is closed.
  ::dup2(pipe, STDIN_FILENO);
  ::dup2(terminal, STDOUT_FILENO);
  ::syscall(SYS_close_range, STDERR_FILENO, ~0U, 0);
  char message = kRestored;
  while (::read(STDIN_FILENO, &message, 1) > 0) continue;
  if (message == kTaken) ::tcsetattr(STDOUT_FILENO, TCSAFLUSH, &settings);
  ::_exit(0);
}

}  // namespace

Terminal::Terminal() : descriptor(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
  if (descriptor < 0) throw std::runtime_error("There is no terminal to type in.");
  ::tcgetattr(descriptor, &before);
  if (!IsForeground()) {
    Say("rng-gather-tty: a program in the background asks for keys. Bring it to the foreground and "
        "repeat.");
    ::close(descriptor);
    throw std::runtime_error("The program is in the background.");
  }
  StartGuard();
}

Terminal::~Terminal() {
  Restore();
  ::close(guard);
  ::close(descriptor);
}

void Terminal::StartGuard() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("There are too many open files.");
  const pid_t process = ::fork();
  if (process == 0) {
    ::close(ends[1]);
    Guard(ends[0], descriptor, before);
  }
  ::close(ends[0]);
  guard = ends[1];
  if (process < 0) throw std::runtime_error("There are too many processes.");
}

void Terminal::Tell(char message) const {
  if (::write(guard, &message, 1) != 1)
    throw std::runtime_error("The guard of the terminal's settings has ended.");
}

void Terminal::TakeKeys() {
  termios keys = before;
  keys.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
  keys.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | ICRNL | INLCR | IGNCR);
  keys.c_cc[VMIN] = 1;
  keys.c_cc[VTIME] = 0;
  Tell(kTaken);
  hasKeys = true;
  ::tcsetattr(descriptor, TCSADRAIN, &keys);
}

void Terminal::Restore() {
  if (!hasKeys) return;
  ::tcsetattr(descriptor, TCSADRAIN, &before);
  hasKeys = false;
  Tell(kRestored);
}

bool Terminal::IsForeground() const { return ::tcgetpgrp(descriptor) == ::getpgrp(); }

std::string Terminal::Read() {
  char keys[256];
  const ssize_t count = ::read(descriptor, keys, sizeof keys);
  isGone = isGone || count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
  return count > 0 ? std::string(keys, static_cast<std::size_t>(count)) : "";
}

std::size_t Terminal::Width() const {
  winsize size = {};
  ::ioctl(descriptor, TIOCGWINSZ, &size);
  return size.ws_col > 1 ? size.ws_col - 1U : 79;
}

void Terminal::ShowLine(const std::string& text) {
  const std::size_t width = Width();
  const std::string line = text.substr(0, width);
  const std::size_t blanks = std::min(shown, width) - std::min(line.size(), std::min(shown, width));
  Write('\r' + line + std::string(blanks, ' ') + std::string(blanks, '\b'));
  shown = line.size();
}

void Terminal::Say(const std::string& text) {
  Write(text + "\r\n");
  shown = 0;
}

// What a stopped terminal does not take is lost. It is only a picture.
void Terminal::Write(const std::string& text) {
  const ssize_t written = ::write(descriptor, text.data(), text.size());
  isGone = isGone || (written < 0 && errno != EAGAIN && errno != EINTR);
}
