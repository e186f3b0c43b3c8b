// A plug-in without capability bits, with a control character in its description. Its name is the macro NAMED, or
// its kind.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class FlaglessRng final : public CorrectRng {
 public:
#ifdef NAMED
  std::int32_t GetName(char* buffer) override { return Report(NAMED, buffer); }
#endif
  std::int32_t GetDescription(char* buffer) override { return Report("A quiet\033source", buffer); }
  std::uint32_t GetFlags() override { return 0; }
};

}  // namespace

EXPORT_RNG(FlaglessRng)
