// Its factory never answers.

#include <rngaggregator/provider.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  ::pause();
  return nullptr;
}
