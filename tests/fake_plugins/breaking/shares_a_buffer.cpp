// Puts its texts together in memory that the calls share.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class SharesABufferRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Assemble(KIND, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Assemble("A source", buffer); }

 private:
  std::int32_t Assemble(const char* text, char* buffer) {
    std::strcpy(shared, text);
    ::usleep(100);
    return Report(shared, buffer);
  }
  char shared[32] = "";
};

}  // namespace

EXPORT_RNG(SharesABufferRng)
