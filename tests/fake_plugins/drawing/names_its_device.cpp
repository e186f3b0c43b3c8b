// Has the devices "r1", which is in use at first, "r2", and "rr". Its draws repeat the name of the one in use,
// but those of "rr" are random.

#include "tests/fake_plugins/correct_rng.h"

namespace {

class NamingRng final : public CorrectRng {
 public:
  std::int32_t GetHardwareId(char* buffer) override {
    const char name[] = {'r', device, '\0'};
    return Report(name, buffer);
  }
  bool SelectDevice(const char* hardwareId) override {
    if (!hardwareId || !*hardwareId) return true;
    if (std::strcmp(hardwareId, "r1") != 0 && std::strcmp(hardwareId, "r2") != 0 &&
        std::strcmp(hardwareId, "rr") != 0)
      return false;
    device = hardwareId[1];
    return true;
  }
  bool Generate(void* buffer, std::size_t size) override {
    if (device == 'r') return CorrectRng::Generate(buffer, size);
    auto* const bytes = static_cast<char*>(buffer);
    for (std::size_t place = 0; place < size; ++place) bytes[place] = place % 2 == 0 ? 'r' : device;
    return true;
  }

 private:
  char device = '1';
};

}  // namespace

EXPORT_RNG(NamingRng)
