// Checked draws compared with the draws alone: the system's generator is the provider.

#include "benchmarks/timing/draw_timing.h"

#include "benchmarks/timing/alternation.h"

#include <memory>
#include <stdexcept>
#include <sys/random.h>
#include <vector>

#include <rngaggregator/checked_rng.h>

namespace {

class SystemRng final : public IRngProvider {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::getrandom(bytes + done, size - done, 0);
      if (count < 0) return false;
      done += static_cast<std::size_t>(count);
    }
    return true;
  }
  std::int32_t GetName(char*) override { return 0; }
  std::int32_t GetDescription(char*) override { return 0; }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char*) override { return true; }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return 0; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}
};

struct Draws {
  explicit Draws(std::size_t size) : buffer(size) {}
  SystemRng system;
  CheckedRng checked{&system};
  std::vector<unsigned char> buffer;
};

void Draw(IRngProvider& rng, std::vector<unsigned char>& buffer) {
  if (!rng.Generate(buffer.data(), buffer.size())) throw std::runtime_error("a draw failed");
}

void RegisterSize(std::size_t size) {
  RegisterPair("draws/" + std::to_string(size) + " bytes", [size] {
    const auto draws = std::make_shared<Draws>(size);
    return Pair{{nullptr, [draws] { Draw(draws->checked, draws->buffer); }},
                {nullptr, [draws] { Draw(draws->system, draws->buffer); }}};
  });
}

}  // namespace

void RegisterDraws() {
  for (const std::size_t size : {8, 32, 256, 4096, 65536, 1048576}) RegisterSize(size);
}
