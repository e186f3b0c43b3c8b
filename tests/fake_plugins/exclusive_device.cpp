// Its device serves one process at a time: the one that has locked the file of the plug-in.

#include "tests/fake_plugins/correct_rng.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

int g_file = -1;
bool g_isOurs = false;

class ExclusiveRng final : public CorrectRng {
 public:
  bool IsAvailable() override {
    Dl_info self = {};
    ::dladdr(&g_file, &self);
    g_file = ::open(self.dli_fname, O_RDONLY | O_CLOEXEC);
    g_isOurs = ::flock(g_file, LOCK_EX | LOCK_NB) == 0;
    return true;
  }
  bool SelectDevice(const char* hardwareId) override {
    return CorrectRng::SelectDevice(hardwareId) || std::strcmp(hardwareId, "R1") == 0;
  }
  void Release() override { ::close(g_file); }
};

}  // namespace

EXPORT_RNG(ExclusiveRng)

std::int32_t GetRngReport(char* buffer) {
  const char* const report = g_isOurs ? "device\tR1\tReader 1" : "problem\tReader 1 is in use.";
  if (buffer) std::strcpy(buffer, report);
  return static_cast<std::int32_t>(std::strlen(report) + 1);
}
