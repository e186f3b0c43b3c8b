#include "tools/rngctl/channel/channel.h"

#include "tools/rngctl/channel/signal_block.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/socket.h>

namespace {

// Precedes each message. The mark distinguishes messages from what a plug-in writes to the descriptor.
struct Header {
  std::uint32_t mark;
  std::uint32_t size;
};
constexpr std::uint32_t kMark = 0x52C3D1E9;
constexpr std::uint32_t kMarkOfLastWords = 0x52C3D1EA;

constexpr std::uint32_t kLargestRequest = 1U << 24;

std::mutex g_sending;
int g_channel = -1;  // of a child

bool WriteAll(int descriptor, const void* bytes, std::size_t size) {
  const auto* place = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t count = ::send(descriptor, place, size, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    place += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

bool ReadAll(int descriptor, void* bytes, std::size_t size) {
  return ::recv(descriptor, bytes, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

bool WriteFrame(int descriptor, std::uint32_t mark, const std::string& bytes) {
  const Header header = {mark, static_cast<std::uint32_t>(bytes.size())};
  std::string frame(reinterpret_cast<const char*>(&header), sizeof header);
  frame += bytes;  // in one piece: a plug-in may have forked, and both processes send
  return WriteAll(descriptor, frame.data(), frame.size());
}

// Returns the content of the last complete frame with that mark.
std::optional<std::string> FindLast(const std::string& sent, std::uint32_t mark) {
  std::optional<std::string> last;
  Header header;
  for (std::size_t place = 0; sent.size() - place >= sizeof header; place += header.size) {
    std::memcpy(&header, sent.data() + place, sizeof header);
    place += sizeof header;
    if (header.mark != kMark && header.mark != kMarkOfLastWords) return std::nullopt;
    if (header.size > sent.size() - place) break;
    if (header.mark == mark) last = sent.substr(place, header.size);
  }
  return last;
}

void SendFrame(std::uint32_t mark, const std::string& bytes) {
  const SignalBlock block;  // a handler may call Initialize, which sends, too
  const std::lock_guard guard(g_sending);
  WriteFrame(g_channel, mark, bytes);  // a failure does not matter: then nobody reads
}

}  // namespace

bool WriteMessage(int descriptor, const std::string& bytes) {
  return WriteFrame(descriptor, kMark, bytes);
}

std::optional<std::string> FindLastMessage(const std::string& sent) {
  return FindLast(sent, kMark);
}

std::string FindLastWords(const std::string& sent) {
  return FindLast(sent, kMarkOfLastWords).value_or("");
}

std::optional<std::string> OpenChannel(int descriptor) {
  Header header = {};
  if (!ReadAll(descriptor, &header, sizeof header) || header.mark != kMark ||
      header.size > kLargestRequest) {
    return std::nullopt;
  }
  std::string request(header.size, '\0');
  if (!ReadAll(descriptor, request.data(), request.size())) return std::nullopt;
  ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  g_channel = descriptor;
  return request;
}

bool IsHeard(int descriptor) {
  char next;
  return ::recv(descriptor, &next, sizeof next, MSG_PEEK | MSG_DONTWAIT) != 0;
}

void SendMessage(const std::string& bytes) { SendFrame(kMark, bytes); }

void SendLastWords(const std::string& words) { SendFrame(kMarkOfLastWords, words); }
