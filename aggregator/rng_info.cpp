#include "aggregator/rng_info.h"

#include <dlfcn.h>

RngInfoVector::~RngInfoVector() {
  for (const RngInfoEx& info : *this) {
    if (info.handle) ::dlclose(info.handle);
  }
}
