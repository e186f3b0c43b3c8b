#ifndef TESTS_FAKE_PLUGINS_CORRECT_RNG_H
#define TESTS_FAKE_PLUGINS_CORRECT_RNG_H

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/random.h>

#include <rngaggregator/provider.h>

/// A provider that keeps the whole contract, for fake plug-ins that override the operation in which they
/// do not. Its kind is the macro KIND.
class CorrectRng : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override { return Report(KIND, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report("A simple source", buffer); }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char* hardwareId) override { return !hardwareId || !*hardwareId; }
  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::getrandom(bytes + done, size - done, 0);
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    return true;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return kRngCapabilityHardware; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}

 protected:
  static std::int32_t Report(const char* text, char* buffer) {
    const std::size_t size = std::strlen(text) + 1;
    if (buffer) std::memcpy(buffer, text, size);
    return static_cast<std::int32_t>(size);
  }

  /// True once in a process, however often the plug-in is loaded. The mark is a library that stays
  /// loaded: nothing else in the process changes.
  static bool IsFirstTime() {
    const char* const mark = "libutil.so.1";
    const bool isFirst = !::dlopen(mark, RTLD_LAZY | RTLD_NOLOAD);
    ::dlopen(mark, RTLD_LAZY | RTLD_NODELETE);
    return isFirst;
  }
};

/// The object and the factory of a plug-in.
#define EXPORT_RNG(Class)  \
  static Class g_provider; \
  extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }

#endif
