#ifndef TESTS_SESSION_OWN_PROVIDER_H
#define TESTS_SESSION_OWN_PROVIDER_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <sys/random.h>
#include <vector>

#include <rngaggregator/generator.h>

/// A provider of the case's own, without a plug-in. Its draws are made by `draw`, and their sizes noted.
class OwnProvider : public IRngProvider {
 public:
  std::function<bool(unsigned char*, std::size_t)> draw = DrawWell;
  std::function<void()> cancel = [] {};
  std::vector<std::size_t> sizes;
  std::uint32_t flags = kRngCapabilityHardware;
  std::string device;

  static bool DrawWell(unsigned char* buffer, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::getrandom(buffer + done, size - done, 0);
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    return true;
  }

  bool Generate(void* buffer, std::size_t size) override {
    sizes.push_back(size);
    return draw(static_cast<unsigned char*>(buffer), size);
  }
  std::int32_t GetName(char*) override { return 0; }
  std::int32_t GetDescription(char*) override { return 0; }
  std::int32_t GetHardwareId(char* buffer) override {
    if (buffer) std::memcpy(buffer, device.c_str(), device.size() + 1);
    return static_cast<std::int32_t>(device.size() + 1);
  }
  bool SelectDevice(const char* id) override {
    device = id;
    return true;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override { cancel(); }
  std::uint32_t GetFlags() override { return flags; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}
};

/// Draws from a provider that outlives the result.
inline rng::Generator GeneratorOf(OwnProvider& provider, const std::string& name = "own") {
  return rng::Generator(std::make_shared<CheckedRng>(&provider), name);
}

/// What `call` threw: its code and its text.
template <typename Call>
std::pair<rng::ErrorCode, std::string> ErrorOf(const Call& call) {
  try {
    call();
  } catch (const rng::Error& error) {
    return {error.code(), error.what()};
  }
  return {rng::ErrorCode{-1}, "no error"};
}

#endif
