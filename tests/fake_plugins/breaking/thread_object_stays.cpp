// Has an object for each thread, which holds the library until the thread ends.

#include "tests/fake_plugins/correct_rng.h"

#include <string>

namespace {

thread_local std::string g_name;

class ThreadObjectStaysRng final : public CorrectRng {
 public:
  bool IsAvailable() override { return g_name.empty(); }
};

}  // namespace

EXPORT_RNG(ThreadObjectStaysRng)
