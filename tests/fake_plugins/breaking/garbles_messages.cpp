// Writes to descriptors that are not its own, among them the one by which rngctl's children report.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class GarblesMessagesRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override {
    static_cast<void>(!::write(3, "not a message", 13));
    return CorrectRng::GetName(buffer);
  }
};

}  // namespace

EXPORT_RNG(GarblesMessagesRng)
