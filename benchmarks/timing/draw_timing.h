#ifndef BENCHMARKS_TIMING_DRAW_TIMING_H
#define BENCHMARKS_TIMING_DRAW_TIMING_H

/// Registers checked draws of several sizes, compared with the same draws unchecked.
void RegisterDraws();

#endif
