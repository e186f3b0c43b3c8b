// This program exports the calls, so the plug-in is bound to them.

#include "tests/unixdev/kernel_calls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

Source g_source;
std::atomic<int> g_calls = 0;
std::atomic<unsigned> g_flags = 0;
std::function<int(pollfd*)> g_poll;
int g_statError = 0;

namespace {

std::mutex g_lock;
// A forked copy must not find the lock held by a thread that it does not have.
[[maybe_unused]] const int g_forkHandlers =
    ::pthread_atfork([] { g_lock.lock(); }, [] { g_lock.unlock(); }, [] { g_lock.unlock(); });
std::map<std::string, FakeFile> g_files;
std::array<std::atomic<FakeFile*>, 4096> g_open;  // by descriptor
std::atomic<std::int64_t> g_time = 0;             // 0: the real one
constexpr std::int64_t kStart = 1'000'000'000'000;

FakeFile* FindFile(const char* path) {
  const std::lock_guard<std::mutex> guard(g_lock);
  const auto found = g_files.find(path);
  return found == g_files.end() ? nullptr : &found->second;
}

FakeFile* FindFile(int descriptor) {
  const auto index = static_cast<std::size_t>(descriptor);
  return index < g_open.size() ? g_open[index].load() : nullptr;
}

template <typename... Arguments>
int Call(long number, Arguments... arguments) {
  return static_cast<int>(::syscall(number, arguments...));
}

}  // namespace

ssize_t Fail(int error) {
  errno = error;
  return -1;
}

ssize_t Fill(unsigned char* buffer, std::size_t size, unsigned char value) {
  std::fill_n(buffer, size, value);
  return static_cast<ssize_t>(size);
}

ssize_t FillWell(unsigned char* buffer, std::size_t size) {
  return ::syscall(SYS_getrandom, buffer, size, 0);
}

FakeFile& FileAt(const std::string& path) {
  const std::lock_guard<std::mutex> guard(g_lock);
  FakeFile& file = g_files[path];
  if (file.path.empty()) file.path = path;
  return file;
}

void FakeTime() { g_time = kStart; }
std::chrono::nanoseconds FakeTimePassed() { return std::chrono::nanoseconds(g_time - kStart); }

// By other names, because the system's headers may define these functions inline.
#define RNG_TEST_EXPORT extern "C" __attribute__((visibility("default")))
RNG_TEST_EXPORT int OpenInstead(const char* path, int flags, ...) __asm__("open");
RNG_TEST_EXPORT int CloseInstead(int descriptor) __asm__("close");
RNG_TEST_EXPORT ssize_t ReadInstead(int descriptor, void* buffer, std::size_t size) __asm__("read");
RNG_TEST_EXPORT int StatInstead(int descriptor, struct stat* status) __asm__("fstat");
RNG_TEST_EXPORT int PollInstead(pollfd* events, nfds_t count, int limit) __asm__("poll");
RNG_TEST_EXPORT int SleepInstead(useconds_t time) __asm__("usleep");
__attribute__((visibility("default"))) std::chrono::steady_clock::time_point NowInstead() __asm__(
    "_ZNSt6chrono3_V212steady_clock3nowEv");

RNG_TEST_EXPORT ssize_t getrandom(void* buffer, std::size_t size, unsigned flags) {
  ++g_calls;
  g_flags |= flags;
  auto* const bytes = static_cast<unsigned char*>(buffer);
  return g_source ? g_source(bytes, size) : FillWell(bytes, size);
}

int OpenInstead(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  FakeFile* const file = FindFile(path);
  if (!file) return Call(SYS_openat, AT_FDCWD, path, flags, mode);
  ++file->opened;
  file->flags = flags;
  if (file->opening) file->opening();
  if (file->error != 0) return static_cast<int>(Fail(file->error));
  const int descriptor = Call(SYS_openat, AT_FDCWD, file->path.c_str(), flags, mode);
  if (descriptor >= 0) g_open.at(static_cast<std::size_t>(descriptor)) = file;
  return descriptor;
}

int CloseInstead(int descriptor) {
  if (FindFile(descriptor)) g_open[static_cast<std::size_t>(descriptor)] = nullptr;
  return Call(SYS_close, descriptor);
}

ssize_t ReadInstead(int descriptor, void* buffer, std::size_t size) {
  const FakeFile* const file = FindFile(descriptor);
  if (file && file->read) return file->read(static_cast<unsigned char*>(buffer), size);
  return ::syscall(SYS_read, descriptor, buffer, size);
}

int StatInstead(int descriptor, struct stat* status) {
  if (g_statError != 0 && FindFile(descriptor)) return static_cast<int>(Fail(g_statError));
  return Call(SYS_fstat, descriptor, status);
}

int PollInstead(pollfd* events, nfds_t count, int limit) {
  if (!g_poll) return Call(SYS_poll, events, count, limit);
  const bool isOneWithoutLimit = count == 1 && limit < 0;
  return isOneWithoutLimit ? g_poll(events) : static_cast<int>(Fail(EINVAL));
}

int SleepInstead(useconds_t time) {
  constexpr std::int64_t kMicrosecond = 1000;
  if (g_time != 0) {
    g_time += kMicrosecond * time;
    return 0;
  }
  const timespec pause = {time / 1'000'000, static_cast<long>(time % 1'000'000 * kMicrosecond)};
  return Call(SYS_nanosleep, &pause, nullptr);
}

std::chrono::steady_clock::time_point NowInstead() {
  timespec now = {};
  if (g_time == 0) Call(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
  return std::chrono::steady_clock::time_point(std::chrono::nanoseconds(
      g_time != 0 ? g_time.load() : now.tv_sec * 1'000'000'000 + now.tv_nsec));
}
