// A product that does nothing. The replay must not be content with it.

#include "settings/profile_file.h"

std::uint32_t ReadProfileString(const char*, const char*, const char*, char*, std::uint32_t,
                                const char*) {
  return 0;
}

int WriteProfileString(const char*, const char*, const char*, const char*) { return 0; }
