// Checked draws compared with the draws alone: the system's generator is the provider.

#include "benchmarks/timing/draw_timing.h"

#include "benchmarks/timing/alternation.h"
#include "benchmarks/timing/system_rng.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <rngaggregator/checked_rng.h>

namespace {

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
