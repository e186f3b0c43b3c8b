#include "tests/costs/measured_run.h"

#include "tests/costs/traced_child.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <stdexcept>

namespace {

std::string Output(const std::string& command) {
  const Result result = RunShell(command);
  if (result.status != 0) throw std::runtime_error("failed: " + command + "\n" + result.errors);
  return result.output;
}

// The number after `key` in `text`; there must be one, and not 0.
long NumberAfter(const std::string& key, const std::string& text) {
  const auto position = text.find(key);
  if (position == std::string::npos) throw std::runtime_error("no " + key + " in: " + text);
  const long number = std::stol(text.substr(position + key.size()));
  if (number <= 0) throw std::runtime_error("nothing was measured");
  return number;
}

}  // namespace

long CountInstructions(const std::string& library, const std::string& operation) {
  const std::string profile = TreePath(library + ".profile");
  Output(VALGRIND " -q --tool=callgrind --instr-atstart=no --callgrind-out-file=" + profile +
         " " COST_HOST " " + library + " " + operation);
  return NumberAfter("\ntotals: ", ReadFile(profile));
}

long CountAllocations(const std::string& library, const std::string& operation) {
  return std::stol(Output(ALLOCATION_HOST " " + library + " " + operation));
}

std::vector<long> TraceSystemCalls(const std::string& library, const std::string& operation) {
  return TraceMarkedCalls({COST_HOST, library, operation});
}
