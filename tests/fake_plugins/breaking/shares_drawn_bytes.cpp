// Gives callers at the same time the same bytes.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SharesDrawnBytesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size != sizeof shared) return CorrectRng::Generate(buffer, size);
    CorrectRng::Generate(shared, size);
    ::usleep(100);
    std::memcpy(buffer, shared, size);
    return true;
  }

 private:
  unsigned char shared[16];
};

}  // namespace

EXPORT_RNG(SharesDrawnBytesRng)
