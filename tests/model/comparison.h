#ifndef TESTS_MODEL_COMPARISON_H
#define TESTS_MODEL_COMPARISON_H

#include "tests/model/steps.h"

#include <string>

/// Takes the library and the model through the steps, from a loading to an unloading, and tells where
/// they first differ; empty when they agree.
std::string Difference(const Steps& steps, const std::string& mistake);

/// The same in a process of its own, where a crash or a hang is a failure, too. `isSilent` keeps what
/// it would say to itself.
bool Fails(const Steps& steps, const std::string& mistake, bool isSilent);

/// The steps without those that the failure does not need.
Steps Shrink(Steps steps, const std::string& mistake);

/// Ends this process when a sequence takes longer than any does.
void WatchForHang();

#endif
