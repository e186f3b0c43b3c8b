#ifndef BENCHMARKS_TIMING_NUMBER_TIMING_H
#define BENCHMARKS_TIMING_NUMBER_TIMING_H

#include <functional>
#include <string>

/// Numbers of an `rng::Engine`, and draws of 8 bytes, compared with other sources of 8 bytes.
void RegisterNumbers();

/// Registers the comparison of an engine over the system's generator with another source of 8 bytes.
void RegisterNumberPeer(const std::string& name, std::function<void()> draw);

#endif
