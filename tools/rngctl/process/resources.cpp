#include "tools/rngctl/process/resources.h"

#include "tools/rngctl/process/descriptor.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <new>
#include <optional>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The value at an address that may no longer be mapped.
std::optional<std::uint64_t> ReadMemory(std::uint64_t address) {
  const Descriptor memory(::open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
  std::uint64_t value = 0;
  const auto place = static_cast<off_t>(address);
  if (::pread(memory.Get(), &value, sizeof value, place) != sizeof value) return std::nullopt;
  return value;
}

// The thread that the C library starts for timers with SIGEV_THREAD waits for an internal signal alone. No
// other code can do that, because sigaddset refuses this signal.
bool IsTimerThread(const std::string& thread) {
  constexpr std::uint64_t kOnlyInternalSignal = std::uint64_t{1} << 31;  // signal 32
  std::ifstream state("/proc/self/task/" + thread + "/syscall");
  int call = 0;
  std::uint64_t signals = 0;
  const bool isWaiting = state >> call >> std::hex >> signals && call == SYS_rt_sigtimedwait;
  return isWaiting && ReadMemory(signals) == kOnlyInternalSignal;
}

}  // namespace

std::set<std::string> ThreadsOfThisProcess() {
  std::set<std::string> threads;
  for (const auto& entry : fs::directory_iterator("/proc/self/task")) {
    const std::string thread = entry.path().filename();
    if (!IsTimerThread(thread)) threads.insert(thread);
  }
  return threads;
}

bool AreOnlyLeft(const std::set<std::string>& threads) {
  for (int i = 0; i < 50; ++i) {
    const std::set<std::string> now = ThreadsOfThisProcess();
    if (std::includes(threads.begin(), threads.end(), now.begin(), now.end())) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

std::map<std::string, std::string> OpenFiles() {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code isClosed;  // the one that is used to list them
    files[entry.path().filename()] = fs::read_symlink(entry.path(), isClosed).string();
  }
  const std::string self = fs::canonical("/proc/self/fd").string();
  for (auto file = files.begin(); file != files.end();) {
    file = file->second == self ? files.erase(file) : std::next(file);
  }
  return files;
}

std::map<std::string, void*> Handlers() {
  std::map<std::string, void*> handlers = {
      {"std::terminate", reinterpret_cast<void*>(std::get_terminate())},
      {"operator new", reinterpret_cast<void*>(std::get_new_handler())}};
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0) continue;
    if (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN) continue;
    const std::string name = "signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    handlers.emplace(name, reinterpret_cast<void*>(action.sa_handler));
  }
  return handlers;
}

ProcessSize SizeOfThisProcess() {
  std::ifstream maps("/proc/self/maps");
  const auto lines =
      std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n');
  std::ifstream statistics("/proc/self/statm");
  std::size_t pages = 0;
  statistics >> pages;
  const struct mallinfo2 heap = ::mallinfo2();
  return {OpenFiles().size(), ThreadsOfThisProcess().size(), static_cast<std::size_t>(lines),
          heap.uordblks + heap.hblkhd, pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))};
}
