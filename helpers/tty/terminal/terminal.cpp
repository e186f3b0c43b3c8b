#include "helpers/tty/terminal/terminal.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

Terminal::Terminal() : descriptor(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
  if (descriptor < 0) throw std::runtime_error("There is no terminal to type in.");
}

Terminal::~Terminal() {
  LeaveKeys();
  ::close(descriptor);
  ::close(reservation);
}

// /dev/tty has the same name in every terminal, so the device number identifies it.
std::string Terminal::Name() const {
  unsigned device = 0;
  if (::ioctl(descriptor, TIOCGDEV, &device) != 0) return "";
  constexpr unsigned kPseudoTerminals = 136;
  if (major(device) == kPseudoTerminals) return "pts/" + std::to_string(minor(device));
  const std::string link =
      "/sys/dev/char/" + std::to_string(major(device)) + ':' + std::to_string(minor(device));
  std::error_code unknown;
  return std::filesystem::read_symlink(link, unknown).filename();
}

bool Terminal::Reserve() {
  if (reservation < 0) {
    reservation = ::open(("/dev/" + Name()).c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  }
  return reservation < 0 || ::flock(reservation, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void Terminal::TakeKeys() {
  if (!settings.areTaken) settings = PrepareSettings(descriptor);
  if (!guard || !guard->Tell(settings))
    throw std::runtime_error("The process that restores the terminal has been killed.");
  ::tcsetattr(descriptor, TCSANOW, &settings.now);
}

void Terminal::LeaveKeys() {
  RestoreSettings(descriptor, settings);
  settings.areTaken = false;
  if (guard) guard->Tell(settings);
  ::flock(reservation, LOCK_UN);
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

// A stopped terminal accepts no output. What it does not accept is lost, which does not matter: it is only
// progress. Read notices a terminal that is gone.
void Terminal::Write(const std::string& text) const {
  [[maybe_unused]] const ssize_t written = ::write(descriptor, text.data(), text.size());
}
