#ifndef TESTS_FAULTS_FAULT_PLAN_H
#define TESTS_FAULTS_FAULT_PLAN_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// Which call of which function is to fail, and what has been called. Streams for reading and for
/// writing are told apart: "fopen r", "fopen w", "fclose r", "fclose w"; every way to write is
/// "write"; both forms of the operator are "operator new".
struct FaultPlan {
  std::string function;      ///< "": none; "*": every one
  std::size_t number = 1;    ///< the call that fails, counted from 1
  bool fromThenOn = false;   ///< and all later ones
  int lockResult = 0;        ///< what a failing pthread_mutex_lock returns
  bool isArmed = false;      ///< calls outside the one under test neither count nor fail
  std::size_t injected = 0;  ///< how many calls have failed
  std::map<std::string, std::size_t> calls;

  /// Counts a call; true when it is to fail.
  bool Strikes(const char* called);
};

/// How many calls other than allocations there were.
std::size_t CallsOutside(const FaultPlan& plan);

/// The plan that the library under test follows, and what it left behind.
struct RealFaults : FaultPlan {
  long alive = 0;               ///< its allocations that are not yet freed
  std::vector<void*> unclosed;  ///< the handles that a failing dlclose left open
  std::string fixedDirectory;   ///< the settings directory of the build
  std::string scratch;          ///< stands for it, so that a case stays inside its tree
};
RealFaults& Faults();

/// For the calls that stand in: they may not allocate themselves.
void LeaveUnclosed(void* handle);
const char* RealPath(const char* path);

#endif
