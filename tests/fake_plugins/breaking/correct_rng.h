#ifndef TESTS_FAKE_PLUGINS_BREAKING_CORRECT_RNG_H
#define TESTS_FAKE_PLUGINS_BREAKING_CORRECT_RNG_H

#include "tests/fake_plugins/simple_rng.h"

#include <cstdlib>
#include <sys/random.h>

/// A provider that keeps the whole contract, for plug-ins that break one rule of it.
class CorrectRng : public SimpleRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
      const ssize_t count = ::getrandom(bytes + done, size - done, 0);
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    return true;
  }

 protected:
  /// True once in a process, however often the plug-in is loaded.
  static bool IsFirstTime() {
    const bool isFirst = !std::getenv("RNG_BREAKING_DONE");
    ::setenv("RNG_BREAKING_DONE", "1", 1);
    return isFirst;
  }
};

/// The object and the factory of a plug-in.
#define EXPORT_RNG(Class)  \
  static Class g_provider; \
  extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_provider; }

#endif
