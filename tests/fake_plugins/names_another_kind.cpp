// Has the file name of one kind and reports the name of another. The macro ALSO is a second factory, or
// empty.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NamesAnotherKindRng final : public CorrectRng {
 public:
  std::int32_t GetName(char* buffer) override { return Report("sobol", buffer); }
};

}  // namespace

EXPORT_RNG(NamesAnotherKindRng)

#ifdef ALSO
IRngProvider* ALSO() { return FACTORY(); }
#endif
