// Its factory never answers.

#include <unistd.h>

#include <rngaggregator/provider.h>

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() {
  ::pause();
  return nullptr;
}
