// growth WHAT COUNT [CONFIGURATION]: uses the provider COUNT times, and prints how much this process and its helpers have
// grown. A tenth of that number comes first and is not counted, because it fills caches.

#include "tests/openssl/watermark.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

void Draw(OSSL_LIB_CTX* context) {
  unsigned char bytes[32];
  if (RAND_bytes_ex(context, bytes, sizeof bytes, 0) == 1 && HaveWatermark(bytes, sizeof bytes))
    return;
  ERR_print_errors_fp(stderr);
  std::_Exit(1);
}

void DrawOften(int count) {
  for (int i = 0; i < count; ++i) Draw(nullptr);
}

void DrawInChildren(int count) {
  for (int i = 0; i < count; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      Draw(nullptr);
      std::exit(0);
    }
    int status = -1;
    if (::waitpid(child, &status, 0) != child || status != 0) std::_Exit(1);
  }
}

void UseContexts(int count, const char* configuration) {
  for (int i = 0; i < count; ++i) {
    OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
    if (!OSSL_LIB_CTX_load_config(context, configuration)) std::_Exit(1);
    Draw(context);
    OSSL_LIB_CTX_free(context);
  }
}

// The helpers are orphans, so they become children of this subreaper.
std::vector<std::string> Children() {
  std::vector<std::string> children;
  std::error_code ended;
  for (const auto& entry : fs::directory_iterator("/proc", ended)) {
    std::string text;
    std::getline(std::ifstream(entry.path() / "stat"), text);
    const std::size_t name = text.rfind(") ");
    if (name != std::string::npos && std::atoi(text.c_str() + name + 4) == ::getpid())
      children.push_back(entry.path());
  }
  return children;
}

struct Usage {
  long residentKiB = 0;
  long descriptors = 0;
  long processes = 0;

  void Add(const fs::path& process) {
    long total = 0;
    long resident = 0;
    std::ifstream(process / "statm") >> total >> resident;
    residentKiB += resident * ::sysconf(_SC_PAGESIZE) / 1024;
    // Only root can see those of a helper.
    std::error_code hidden;
    descriptors += std::distance(fs::directory_iterator(process / "fd", hidden), {});
    ++processes;
  }
};

// Waits up to half a minute for processes that are still exiting.
Usage Measure(std::size_t expected) {
  for (int i = 0; i < 3000 && Children().size() > expected; ++i) {
    while (::waitpid(-1, nullptr, WNOHANG) > 0) continue;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  Usage usage;
  usage.Add("/proc/self");
  for (const std::string& child : Children()) usage.Add(child);
  return usage;
}

void Run(const std::string& what, int count, const char* configuration) {
  if (what == "draws") DrawOften(count);
  if (what == "forks") DrawInChildren(count);
  if (what == "contexts") UseContexts(count, configuration);
}

}  // namespace

int main(int, char** arguments) {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  const std::string what = arguments[1];
  const int count = std::atoi(arguments[2]);
  Draw(nullptr);
  Run(what, count / 10, arguments[3]);
  const Usage before = Measure(1);
  Run(what, count, arguments[3]);
  const Usage after = Measure(1);
  std::printf("%ld processes, %ld descriptors, %ld KiB\n", after.processes - before.processes,
              after.descriptors - before.descriptors, after.residentKiB - before.residentKiB);
}
