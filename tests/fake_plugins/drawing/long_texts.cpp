// Its description and the identifier of its device are longer than a message of rngctl.

#include "tests/fake_plugins/correct_rng.h"

#include <string>

namespace {

class LongTextsRng final : public CorrectRng {
 public:
  std::int32_t GetDescription(char* buffer) override { return Report(text.c_str(), buffer); }
  std::int32_t GetHardwareId(char* buffer) override { return Report(text.c_str(), buffer); }

 private:
  const std::string text = std::string(1000000, 'x');
};

}  // namespace

EXPORT_RNG(LongTextsRng)
