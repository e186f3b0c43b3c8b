#ifndef TESTS_GATHERING_ROBOT_H
#define TESTS_GATHERING_ROBOT_H

#include "helpers/gathering/event.h"

#include <cmath>
#include <random>

/// Types and moves as people do, the same in each run.
class Robot {
 public:
  explicit Robot(std::uint64_t seed) : generator(seed) {}

  /// Intervals follow a log-normal distribution with a median of 180 ms. The keys change.
  KeyPress Press() {
    const double interval = 0.18 * std::exp(0.45 * normal(generator));
    now += std::chrono::nanoseconds(static_cast<std::int64_t>(1e9 * interval));
    return {now, static_cast<std::uint32_t>('a' + generator() % 26), true};
  }

  /// A mouse that reports every 8 ms, on a wandering curve.
  Motion Move() {
    now += std::chrono::microseconds(8000 + generator() % 100);
    const auto turn = [this](double& speed) { speed = 0.9 * speed + 3 * normal(generator); };
    turn(speedX);
    turn(speedY);
    x += speedX;
    y += speedY;
    return {now, static_cast<std::int32_t>(std::lround(x)),
            static_cast<std::int32_t>(std::lround(y)), 0};
  }

 private:
  std::mt19937_64 generator;
  std::normal_distribution<double> normal;
  std::chrono::nanoseconds now{1};
  double x = 500;
  double y = 500;
  double speedX = 0;
  double speedY = 0;
};

#endif
