#ifndef TESTS_INTERACTIVE_MOVING_ROBOT_H
#define TESTS_INTERACTIVE_MOVING_ROBOT_H

#include <random>
#include <string>
#include <sys/types.h>
#include <vector>

/// Moves the mouse and presses keys on a display, by the program xdotool. One action at a time: each call
/// waits for the end of the action before, and returns at once.
class MovingRobot {
 public:
  /// `x`, `y`: the middle of the area to move in.
  MovingRobot(const std::string& display, int x, int y);
  MovingRobot(const MovingRobot&) = delete;
  MovingRobot& operator=(const MovingRobot&) = delete;
  ~MovingRobot();

  /// A wandering curve as a person makes it, with a motion every 9 ms, within 150 by 60 pixels of the middle.
  void Move(int motions);

  /// One pixel to the right every 9 ms, along a line through the middle.
  void MoveStraight(int motions);

  /// A curve whose bends are two pixels large, the least that counts, with a motion every 9 ms.
  void MoveFinely(int motions);

  /// Motions of 8 pixels, to and fro.
  void Shake(int motions);

  /// Changing keys at intervals that are distributed as a person's, but ten times shorter.
  void Type(int presses);

  /// Any commands of xdotool.
  void Do(const std::vector<std::string>& commands);

  void Wait();

 private:
  std::string environment;
  int middleX;
  int middleY;
  std::mt19937_64 generator{1};
  std::normal_distribution<double> normal;
  pid_t process = 0;
};

#endif
