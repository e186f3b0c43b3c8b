#ifndef TESTS_UNIXDEV_KERNEL_CALLS_H
#define TESTS_UNIXDEV_KERNEL_CALLS_H

#include <atomic>
#include <chrono>
#include <functional>
#include <poll.h>
#include <string>
#include <sys/types.h>

using Source = std::function<ssize_t(unsigned char* buffer, std::size_t size)>;

ssize_t Fail(int error);
ssize_t Fill(unsigned char* buffer, std::size_t size, unsigned char value);
ssize_t FillWell(unsigned char* buffer, std::size_t size);  ///< as the kernel does

extern Source g_source;  ///< what getrandom does in the place of the kernel, when a case sets it
extern std::atomic<int> g_calls;
extern std::atomic<unsigned> g_flags;  ///< every flag that a call has had

/// What the plug-in finds at a path.
struct FakeFile {
  std::string path;               ///< of the real file that is opened
  int error = 0;                  ///< what opening fails with
  Source read;                    ///< what reading does, when a case sets it
  std::function<void()> opening;  ///< what happens while it is opened, when a case sets it
  std::atomic<int> opened = 0;
  std::atomic<int> flags = 0;
};

/// The file at a path, the real one until a case changes it.
FakeFile& FileAt(const std::string& path);

extern std::function<int(pollfd* event)> g_poll;  ///< what poll does, when a case sets it
extern int g_statError;  ///< what fstat fails with for the files above, when a case sets it

/// From here on, time passes only while the plug-in sleeps, and at once.
void FakeTime();
std::chrono::nanoseconds FakeTimePassed();

#endif
