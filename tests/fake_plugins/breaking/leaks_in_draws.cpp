// Forgets some memory in each draw.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class LeaksInDrawsRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    last = std::malloc(32);
    return CorrectRng::Generate(buffer, size);
  }

 private:
  void* volatile last = nullptr;
};

}  // namespace

EXPORT_RNG(LeaksInDrawsRng)
