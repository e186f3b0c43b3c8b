// Ends while it is started, as its argument says, and tells what happens to the plug-ins then.

#include "tests/support/all_bits.h"
#include "tests/support/fakes.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>

#include <rngaggregator/aggregator.h>

namespace {

bool g_isEnding = false;

void TellOf(const char* kind) {
  for (const char* what : {"Release", "closed"}) {
    Fake(kind).hooks[what] = [kind, what] { std::printf("%s.%s\n", kind, what); };
  }
}

}  // namespace

// After the plug-ins' own destructors, which the exit runs first, the library still closes them.
extern "C" __attribute__((visibility("default"))) int dlclose(void* handle) noexcept {
  static const auto close = reinterpret_cast<decltype(&::dlclose)>(::dlsym(RTLD_NEXT, "dlclose"));
  const link_map* library = nullptr;
  if (g_isEnding && ::dlinfo(handle, RTLD_DI_LINKMAP, &library) == 0) {
    std::printf("dlclose %s\n", std::strrchr(library->l_name, '/') + 1);
  }
  return close(handle);
}

int main(int, char** arguments) {
  TellOf("dsdr");
  TellOf("accord");
  Initialize(nullptr);
  std::printf("%d\n", GetAvailableRng(nullptr, kAllBits));
  g_isEnding = true;
  if (std::strcmp(arguments[1], "exit") == 0) std::exit(0);
  return 0;
}
