// Has a thread_local object, which keeps the library loaded until the thread ends. The macro WHERE names the
// operation that creates it.

#include "tests/fake_plugins/correct_rng.h"

#include <string>

namespace {

enum Operation { kIsAvailable, kName, kGenerate };

thread_local std::string g_name;

class ThreadObjectStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return Begin(kIsAvailable); }
  std::int32_t GetName(char* buffer) override {
    return Begin(kName) ? CorrectRng::GetName(buffer) : 0;
  }
  bool Generate(void* buffer, std::size_t size) override {
    return Begin(kGenerate) && CorrectRng::Generate(buffer, size);
  }

 private:
  static bool Begin(Operation operation) { return operation != WHERE || g_name.empty(); }
};

}  // namespace

EXPORT_RNG(ThreadObjectStaysRng)
