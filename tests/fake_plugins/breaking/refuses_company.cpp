// Refuses a draw while another is under way.

#include "tests/fake_plugins/correct_rng.h"

#include <atomic>
#include <unistd.h>

namespace {

class RefusesCompanyRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size == 0) return true;
    const bool isAlone = draws++ == 0;
    ::usleep(100);
    if (isAlone) {
      CorrectRng::Generate(buffer, size);
    } else {
      std::memset(buffer, 0, size);
    }
    --draws;
    return isAlone;
  }

 private:
  std::atomic<int> draws = 0;
};

}  // namespace

EXPORT_RNG(RefusesCompanyRng)
