#include "helpers/tty/record.h"

#include "helpers/session/monotonic_clock.h"
#include "helpers/tty/keys.h"
#include "helpers/tty/signals.h"
#include "helpers/tty/terminal/terminal.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace {

class RecordFile {
 public:
  explicit RecordFile(const std::string& path)
      : name(path),
        descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
    if (descriptor < 0) Fail();
    Write("nanoseconds,key,alone\n");
  }
  RecordFile(const RecordFile&) = delete;
  RecordFile& operator=(const RecordFile&) = delete;
  ~RecordFile() { ::close(descriptor); }

  void Write(const KeyPress& press) {
    Write(std::to_string(press.time.count()) + ',' + std::to_string(press.key) + ',' +
          (press.isAlone ? "1\n" : "0\n"));
  }

 private:
  void Write(const std::string& line) {
    if (::write(descriptor, line.data(), line.size()) != static_cast<ssize_t>(line.size())) Fail();
  }
  [[noreturn]] void Fail() const { throw std::runtime_error(name + ": " + std::strerror(errno)); }

  const std::string name;
  const int descriptor;
};

bool EndsRecord(const KeyPress& press) {
  return press.key == 3 || press.key == 4;  // Ctrl-C, Ctrl-D
}

// Returns the number of presses.
int Record(Terminal& terminal, const Signals& signals, RecordFile& file) {
  int count = 0;
  while (!terminal.IsGone()) {
    pollfd events[] = {{terminal.Get(), POLLIN, 0}, {signals.Get(), POLLIN, 0}};
    ::poll(events, std::size(events), -1);
    if (signals.Next() != 0) break;
    for (const KeyPress& press : SplitKeys(terminal.Read(), MonotonicNow())) {
      if (EndsRecord(press)) return count;
      file.Write(press);
      ++count;
    }
    terminal.ShowLine("Key presses: " + std::to_string(count));
  }
  return count;
}

}  // namespace

void RecordKeys(const std::string& path) {
  const Signals signals;
  Terminal terminal;
  if (!terminal.Reserve())
    throw std::runtime_error(
        "Another program is reading keys from this terminal. Wait until it has finished.");
  RecordFile file(path);
  terminal.StartGuard(-1);
  terminal.TakeKeys();
  terminal.Say("Every key that you press is recorded, unencrypted, in " + path + '.');
  terminal.Say("Do not type any secrets. To stop, press Ctrl-C.");
  const int count = Record(terminal, signals, file);
  terminal.LeaveKeys();
  terminal.ShowLine("Key presses recorded: " + std::to_string(count));
  terminal.Say("");
}
