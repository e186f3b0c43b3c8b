#include "tools/rngctl/started_aggregator.h"

#include <exception>

#include <rngaggregator/aggregator.h>

// A start that throws has raised the count even so.
StartedAggregator::StartedAggregator() try { Initialize(GetDefaultSettings()); } catch (...) {
  ShutDown();
  throw;
}

StartedAggregator::~StartedAggregator() noexcept(false) {
  try {
    ShutDown();
  } catch (...) {
    // While another exception is in flight, that one is reported. cppcheck does not see the condition.
    // cppcheck-suppress exceptThrowInDestructor
    if (std::uncaught_exceptions() == 0) throw;
  }
}
