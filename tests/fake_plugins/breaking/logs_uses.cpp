// Fails no check. Adds a letter for each call to the file that RNG_FAKE_LOG names.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

void Log(char letter) {
  const char* const path = std::getenv("RNG_FAKE_LOG");
  const int file = path ? ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
  ::write(file, &letter, 1);
  ::close(file);
}

struct Lifetime {
  Lifetime() { Log('o'); }
  ~Lifetime() { Log('c'); }
};
const Lifetime g_lifetime;

class LogsUsesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    if (buffer) Log('n');
    return CorrectRng::GetName(buffer);
  }
  std::int32_t GetDescription(char* buffer) override {
    if (buffer) Log('d');
    return CorrectRng::GetDescription(buffer);
  }
  std::int32_t GetHardwareId(char*) override {
    Log('h');
    return 0;
  }
  bool Generate(void* buffer, std::size_t size) override {
    Log('g');
    return CorrectRng::Generate(buffer, size);
  }
  void Release() override { Log('r'); }
};

}  // namespace

EXPORT_RNG(LogsUsesRng)
