// Disturbs its process in the operation WHERE, a macro, in the way HOW: the function below. It is available unless the
// macro AVAILABLE says otherwise.

#include "tests/fake_plugins/correct_rng.h"

#include <csignal>
#include <pthread.h>
#include <unistd.h>

#ifndef AVAILABLE
#define AVAILABLE true
#endif

namespace {

enum class Where { kOpening, kFactory, kSettings, kName, kFlags, kDevice, kRelease, kClosing };

[[maybe_unused]] void Crash() { std::abort(); }
[[maybe_unused]] void Hang() {
  for (;;) ::pause();
}
[[maybe_unused]] void Throw() { throw 7; }
[[maybe_unused]] void Exit() { ::_exit(0); }
[[maybe_unused]] void Quit() { std::exit(0); }
[[maybe_unused]] void Stop() { std::raise(SIGSTOP); }
[[maybe_unused]] void EndThread() { ::pthread_exit(nullptr); }

void Reach(Where place) {
  if (place == Where::WHERE) HOW();
}

struct Presence {
  Presence() { Reach(Where::kOpening); }
  ~Presence() noexcept(false) { Reach(Where::kClosing); }
};

Presence g_presence;

class DisturbingRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return AVAILABLE; }
  std::int32_t GetName(char* buffer) override {
    Reach(Where::kName);
    return CorrectRng::GetName(buffer);
  }
  bool SelectDevice(const char*) override {
    Reach(Where::kDevice);
    return true;
  }
  std::uint32_t GetFlags() override {
    Reach(Where::kFlags);
    return CorrectRng::GetFlags();
  }
  void SetSettings(IRngSettings*) override { Reach(Where::kSettings); }
  void Release() override { Reach(Where::kRelease); }
};

DisturbingRng g_provider;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  Reach(Where::kFactory);
  return &g_provider;
}
