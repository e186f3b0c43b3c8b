// A plug-in as its maker builds it: with a compiler and a standard of its own, and with the standard
// library's types inside. It tells what it was built with.

#include <algorithm>
#include <stdexcept>
#include <string>
#include <sys/random.h>
#include <vector>

#include <rngaggregator/provider.h>

namespace {

#ifdef __clang__
const char kCompiler[] = "CLANG";
#else
const char kCompiler[] = "GNU";
#endif

std::int32_t Report(const std::string& text, char* buffer) {
  if (buffer) std::copy_n(text.c_str(), text.size() + 1, buffer);
  return static_cast<std::int32_t>(text.size() + 1);
}

class ForeignRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(texts.front(), buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report(texts.back(), buffer); }
  std::int32_t GetHardwareId(char* buffer) override {
    return Report(settings->GetHardwareId(), buffer);
  }
  bool SelectDevice(const char*) override { return false; }
  bool Generate(void* buffer, std::size_t size) override {
    return ::getrandom(buffer, size, 0) == static_cast<ssize_t>(size);
  }
  bool IsAvailable() override { return settings != nullptr; }
  bool SelfTest() override { throw std::runtime_error("from the self-test"); }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return kRngCapabilityOperatingSystem; }
  void SetSettings(IRngSettings* given) override { settings = given; }
  void Release() override {
    settings->SetType("released");
    delete this;
  }

 private:
  IRngSettings* settings = nullptr;
  std::vector<std::string> texts = {
      "grandmaster", std::string(kCompiler) + "-" + std::to_string(__cplusplus / 100 % 100)};
};

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* GetGrandmasterRng() {
  return new ForeignRng;
}
