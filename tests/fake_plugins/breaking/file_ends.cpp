// Breaks nothing; it draws from a file that ends, and its self-test reads from the file, too.

#include "tests/fake_plugins/correct_rng.h"

#include <cstdio>
#include <mutex>
#include <unistd.h>

namespace {

constexpr int kSize = 700;

class FileEndsRng final : public CorrectRng {
 public:
  void SetSettings(IRngSettings*) override {
    file = std::tmpfile();
    unsigned char bytes[kSize];
    ::getrandom(bytes, sizeof bytes, 0);
    if (!file || std::fwrite(bytes, 1, sizeof bytes, file) != sizeof bytes) std::abort();
    std::rewind(file);
  }
  bool Generate(void* buffer, std::size_t size) override {
    const std::lock_guard guard(lock);
    if (size == 0 || std::fread(buffer, 1, size, file) == size) return true;
    std::memset(buffer, 0, size);
    return false;
  }
  bool SelfTest() override {
    char bytes[16];
    Generate(bytes, sizeof bytes);
    return true;
  }
  std::uint32_t GetFlags() override { return kRngCapabilityPrerecorded; }
  void Release() override {
    std::fclose(file);
    delete this;
  }

 private:
  std::mutex lock;
  std::FILE* file = nullptr;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  return new FileEndsRng;
}
