// Has a name of 18 characters, or the macro NAME.

#include "tests/fake_plugins/correct_rng.h"

#ifndef NAME
#define NAME "eighteen-character"
#endif

namespace {

class NameIsLongRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Report(NAME, buffer); }
};

}  // namespace

EXPORT_RNG(NameIsLongRng)
