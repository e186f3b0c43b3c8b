#include "tests/faults/fault_plan.h"

#include <set>

bool FaultPlan::Strikes(const char* called) {
  if (!isArmed) return false;
  const std::size_t call = ++calls[called];
  const bool isMeant = function == "*" || function == called;
  const bool strikes = isMeant && (call == number || (fromThenOn && call > number));
  injected += strikes;
  return strikes;
}

std::size_t CallsOutside(const FaultPlan& plan) {
  std::size_t sum = 0;
  for (const auto& [function, calls] : plan.calls) sum += function == "operator new" ? 0 : calls;
  return sum;
}

RealFaults& Faults() {
  static RealFaults faults;
  return faults;
}

void LeaveUnclosed(void* handle) { Faults().unclosed.push_back(handle); }

const char* RealPath(const char* path) {
  static std::set<std::string> paths;
  const std::string asked = path;
  const std::string& fixed = Faults().fixedDirectory;
  if (fixed.empty() || asked.empty()) return path;
  if (asked.rfind(fixed, 0) == 0) {
    return paths.insert(Faults().scratch + asked.substr(fixed.size())).first->c_str();
  }
  // The folders above the build's directory are taken to be there.
  if (fixed.rfind(asked + "/", 0) == 0) return "/";
  return path;
}
