#include "plugins/unixdev/system_source.h"

#include "plugins/unixdev/open_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/random.h>

namespace {

std::atomic<bool> g_isPoolReady = false;  // it stays ready, so one look per process is enough

// A large draw arrives in pieces. On failure, errno says why.
template <typename Read>
bool Fill(unsigned char* bytes, std::size_t size, const Read& read) {
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = read(bytes + done, size - done);
    if (count == 0) errno = EIO;
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

// Polls /dev/random, because /dev/urandom gives bytes even before the pool is ready.
bool WaitForPool() {
  if (g_isPoolReady) return true;
  const OpenFile random("/dev/random");
  if (!random.IsCharacterDevice(1, 8)) return false;
  pollfd event = {random.Get(), POLLIN, 0};
  int count = 0;
  do {
    count = ::poll(&event, 1, -1);
  } while (count < 0 && errno == EINTR);
  if (count != 1 || (event.revents & POLLIN) == 0) return false;
  g_isPoolReady = true;
  return true;
}

bool DrawFromDevice(unsigned char* bytes, std::size_t size) {
  if (!WaitForPool()) return false;
  const OpenFile urandom("/dev/urandom");
  return urandom.IsCharacterDevice(1, 9) &&
         Fill(bytes, size, [&urandom](unsigned char* rest, std::size_t remaining) {
           return urandom.Read(rest, remaining);
         });
}

}  // namespace

bool DrawFromSystem(void* buffer, std::size_t size) {
  auto* const bytes = static_cast<unsigned char*>(buffer);
  const bool isDrawn = Fill(bytes, size, [](unsigned char* rest, std::size_t remaining) {
    return ::getrandom(rest, remaining, 0);
  });
  // The device fills the whole buffer again, even if a filter began to refuse the call in the middle of the draw.
  if (isDrawn || (errno == ENOSYS && DrawFromDevice(bytes, size))) return true;
  std::memset(buffer, 0, size);
  return false;
}
