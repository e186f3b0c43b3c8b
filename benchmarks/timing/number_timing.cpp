#include "benchmarks/timing/number_timing.h"

#include "benchmarks/timing/alternation.h"
#include "benchmarks/timing/system_rng.h"

#include <memory>
#include <random>
#include <stdexcept>

#include <rngaggregator/engine.h>

namespace {

// So that the compiler cannot leave out what nobody uses.
void Use(std::uint64_t number) { asm volatile("" : : "r"(number)); }

rng::Generator SystemGenerator() {
  struct Checked {
    SystemRng system;
    CheckedRng rng{&system};
  };
  const auto checked = std::make_shared<Checked>();
  return rng::Generator(std::shared_ptr<CheckedRng>(checked, &checked->rng), "system");
}

void DrawFromSystem() {
  std::uint64_t number = 0;
  if (::getrandom(&number, sizeof number, 0) != sizeof number)
    throw std::runtime_error("a draw failed");
  Use(number);
}

}  // namespace

void RegisterNumberPeer(const std::string& name, std::function<void()> draw) {
  RegisterPair("numbers/" + name, [draw = std::move(draw)] {
    const auto engine = std::make_shared<rng::Engine>(SystemGenerator());
    return Pair{{nullptr, [engine] { Use((*engine)()); }}, {nullptr, draw}};
  });
}

void RegisterNumbers() {
  RegisterNumberPeer("getrandom", DrawFromSystem);
  const auto device = std::make_shared<std::random_device>();
  RegisterNumberPeer("std::random_device", [device] {
    Use((*device)());
    Use((*device)());
  });
  RegisterPair("numbers/getrandom, without the engine", [] {
    const rng::Generator generator = SystemGenerator();
    const auto draw = [generator] {
      std::uint64_t number[1];
      generator.Fill(number);
      Use(number[0]);
    };
    return Pair{{nullptr, draw}, {nullptr, DrawFromSystem}};
  });
}
