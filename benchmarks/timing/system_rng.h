#ifndef BENCHMARKS_TIMING_SYSTEM_RNG_H
#define BENCHMARKS_TIMING_SYSTEM_RNG_H

#include <sys/random.h>

#include <rngaggregator/provider.h>

/// The system's generator as a provider, without a plug-in.
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

#endif
