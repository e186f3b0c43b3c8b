// Breaks nothing; has a thread, a file and handlers, and Release takes them all back.

#include "tests/fake_plugins/correct_rng.h"

#include <condition_variable>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <pthread.h>
#include <random>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace {

class TakesAllBackRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, &earlierAction);
    earlierTerminate = std::set_terminate([] { std::abort(); });
    earlierNew = std::set_new_handler([] { std::abort(); });
    ::pthread_key_create(&key, [](void*) {});
    ::pthread_setspecific(key, this);
    file = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    thread = std::thread([this] { WaitForTheEnd(); });
  }
  bool Generate(void* buffer, std::size_t size) override {
    try {
      ReadAll(static_cast<char*>(buffer), size);
      return true;
    } catch (const std::runtime_error&) {
      std::memset(buffer, 0, size);
      return false;
    }
  }
  bool SelfTest() override { return std::random_device()() != std::random_device()(); }
  void Release() override {
    {
      const std::lock_guard guard(lock);
      isOver = true;
    }
    hasChanged.notify_all();
    thread.join();
    ::close(file);
    ::pthread_key_delete(key);
    std::set_new_handler(earlierNew);
    std::set_terminate(earlierTerminate);
    ::sigaction(SIGUSR1, &earlierAction, nullptr);
    delete this;
  }

 private:
  void ReadAll(char* bytes, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::read(file, bytes + done, size - done);
      if (count <= 0) throw std::runtime_error("no bytes");
      done += static_cast<std::size_t>(count);
    }
    // Often, so that what an exception takes is seen where it is not given back.
    try {
      throw std::runtime_error("caught where it is thrown");
    } catch (const std::runtime_error&) {
    }
  }
  void WaitForTheEnd() {
    std::unique_lock guard(lock);
    hasChanged.wait(guard, [this] { return isOver; });
  }

  std::mutex lock;
  std::condition_variable hasChanged;
  bool isOver = false;
  std::thread thread;
  int file = -1;
  pthread_key_t key = 0;
  struct sigaction earlierAction = {};
  std::terminate_handler earlierTerminate = nullptr;
  std::new_handler earlierNew = nullptr;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  return new TakesAllBackRng;
}
