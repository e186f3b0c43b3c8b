// Of 50 draws, the first takes a millisecond, and 29 others take a tenth of that at least.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SlowAtTimesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    const int number = draws++ % 50;
    if (number % 5 < 3) ::usleep(number == 0 ? 1000 : 100);
    return CorrectRng::Generate(buffer, size);
  }

 private:
  int draws = 0;
};

}  // namespace

EXPORT_RNG(SlowAtTimesRng)
