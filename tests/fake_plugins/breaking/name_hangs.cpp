// Never answers when asked for its name.

#include "tests/fake_plugins/correct_rng.h"

#include <unistd.h>

namespace {

class NameHangsRng final : public CorrectRng {
 public:
  std::int32_t GetName(char*) override { return ::pause(); }
};

}  // namespace

EXPORT_RNG(NameHangsRng)
