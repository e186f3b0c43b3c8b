// Fails no check; after every thousand uses, it runs one more thread at the same time, up to five. All are joined. The
// file that RNG_FAKE_LOG names has a byte for each use.

#include "tests/fake_plugins/correct_rng.h"

#include <algorithm>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

off_t CountUses() {
  const char* const path = std::getenv("RNG_FAKE_LOG");
  const int file = path ? ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
  struct stat now = {};
  ::write(file, "", 1);
  ::fstat(file, &now);
  ::close(file);
  return now.st_size;
}

class StartsMoreThreadsRng final : public CorrectRng {
 public:
  void Release() override {
    std::promise<void> gate;
    const std::shared_future<void> isOpen = gate.get_future();
    std::vector<std::thread> threads;
    for (off_t left = std::min<off_t>(CountUses(), 4000); left >= 0; left -= 1000) {
      threads.emplace_back([isOpen] { isOpen.wait(); });
    }
    gate.set_value();
    for (std::thread& thread : threads) thread.join();
  }
};

}  // namespace

EXPORT_RNG(StartsMoreThreadsRng)
