#include "tests/interactive/moving_robot.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Commands = std::vector<std::string>;

constexpr char kPause[] = "0.009";     // more than the 8 ms between two samples
constexpr char kLongPause[] = "0.02";  // so that none is missed even if one comes late

void AddMotion(Commands& commands, double x, double y, const std::string& pause = kPause) {
  commands.insert(commands.end(), {"mousemove", std::to_string(std::lround(x)),
                                   std::to_string(std::lround(y)), "sleep", pause});
}

}  // namespace

MovingRobot::MovingRobot(const std::string& display, int x, int y)
    : environment("DISPLAY=" + display), middleX(x), middleY(y) {}

MovingRobot::~MovingRobot() {
  if (process > 0) ::kill(process, SIGKILL);
  Wait();
}

// A spring holds the pointer back from the edge.
void MovingRobot::Move(int motions) {
  Commands commands;
  double x = 0;
  double y = 0;
  double speedX = 0;
  double speedY = 0;
  for (int i = 0; i < motions; ++i) {
    speedX = 0.9 * speedX + 3 * normal(generator) - 0.02 * x;
    speedY = 0.9 * speedY + 3 * normal(generator) - 0.05 * y;
    x = std::clamp(x + speedX, -150.0, 150.0);
    y = std::clamp(y + speedY, -60.0, 60.0);
    AddMotion(commands, middleX + x, middleY + y);
  }
  Do(commands);
}

void MovingRobot::MoveStraight(int motions) {
  Commands commands;
  for (int i = 0; i < motions; ++i) AddMotion(commands, middleX - motions / 2 + i, middleY);
  Do(commands);
}

// A spring holds the pointer back from the edge, and friction limits its speed.
void MovingRobot::MoveFinely(int motions) {
  Commands commands;
  long place[2] = {0, 0};
  long speed[2] = {0, 0};
  for (int i = 0; i < motions; ++i) {
    for (const int axis : {0, 1}) {
      const double pull = -0.01 * double(place[axis]) - 0.1 * double(speed[axis]);
      const long bend = normal(generator) + pull < 0 ? -2 : 2;
      speed[axis] += bend;
      place[axis] += speed[axis];
    }
    AddMotion(commands, double(middleX + place[0]), double(middleY + place[1]));
  }
  Do(commands);
}

void MovingRobot::Shake(int motions) {
  Commands commands;
  for (int i = 0; i < motions; ++i) AddMotion(commands, middleX + i % 2 * 8, middleY, kLongPause);
  Do(commands);
}

void MovingRobot::Type(int presses) {
  Commands commands;
  for (int i = 0; i < presses; ++i) {
    const double interval = std::max(0.018 * std::exp(0.45 * normal(generator)), 0.009);
    const std::string key(1, static_cast<char>('a' + generator() % 26));
    commands.insert(commands.end(),
                    {"key", "--delay", "0", key, "sleep", std::to_string(interval)});
  }
  Do(commands);
}

void MovingRobot::Do(const std::vector<std::string>& commands) {
  Wait();
  process = ::fork();
  if (process != 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::vector<char*> words = {const_cast<char*>("xdotool")};
  for (const std::string& word : commands) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ::putenv(environment.data());
  ::execvp(words[0], words.data());
  ::_exit(127);
}

void MovingRobot::Wait() {
  if (process > 0) ::waitpid(process, nullptr, 0);
  process = 0;
}
