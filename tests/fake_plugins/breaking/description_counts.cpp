// Breaks nothing; its description tells how often it was asked for.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <cstdio>

namespace {

class DescriptionCountsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override {
    char text[32];
    std::snprintf(text, sizeof text, "Asked %010u times", ++count);
    return Report(text, buffer);
  }

 private:
  std::atomic<unsigned> count = 0;
};

}  // namespace

EXPORT_RNG(DescriptionCountsRng)
