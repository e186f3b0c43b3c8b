// Refuses draws that are too large for it, and does not clear their buffers.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class RefusedDrawLeavesBytesRng final : public CorrectRng {
 public:
  bool Generate(void* buffer, std::size_t size) override {
    if (size <= 5000) return CorrectRng::Generate(buffer, size);
    std::memset(buffer, 0x07, size);
    return false;
  }
};

}  // namespace

EXPORT_RNG(RefusedDrawLeavesBytesRng)
