#ifndef TESTS_HEADERS_STOPPING_PAGE_H
#define TESTS_HEADERS_STOPPING_PAGE_H

#include <atomic>
#include <csignal>
#include <cstddef>
#include <sys/mman.h>
#include <unistd.h>

/// Memory that can be closed: a thread that reads it then waits, in the handler of its fault, until it is open again.
/// One at a time.
class StoppingPage {
 public:
  static constexpr std::size_t kSize = 4096;

  StoppingPage() {
    g_isOpen = g_hasReader = false;
    struct sigaction action = {};
    action.sa_handler = Wait;
    ::sigaction(SIGSEGV, &action, &before);
  }
  StoppingPage(const StoppingPage&) = delete;
  StoppingPage& operator=(const StoppingPage&) = delete;
  ~StoppingPage() {
    ::sigaction(SIGSEGV, &before, nullptr);
    ::munmap(bytes, kSize);
  }

  unsigned char* Bytes() const { return static_cast<unsigned char*>(bytes); }
  void Close() const { ::mprotect(bytes, kSize, PROT_NONE); }
  void WaitForReader() const {
    while (!g_hasReader) ::usleep(1000);
  }
  void Open() const {
    ::mprotect(bytes, kSize, PROT_READ | PROT_WRITE);
    g_isOpen = true;
  }

 private:
  static void Wait(int) {
    g_hasReader = true;
    while (!g_isOpen) ::usleep(1000);
  }

  static inline std::atomic<bool> g_isOpen;
  static inline std::atomic<bool> g_hasReader;

  void* const bytes =
      ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  struct sigaction before = {};
};

#endif
