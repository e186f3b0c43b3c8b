#include "tests/costs/measured_run.h"

#include "tests/costs/traced_child.h"
#include "tests/support/tree.h"

#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace {

struct ClosePipe {
  int* status;
  void operator()(std::FILE* pipe) const { *status = ::pclose(pipe); }
};

std::string Output(const std::string& command) {
  std::string output;
  int status = -1;
  {
    const std::unique_ptr<std::FILE, ClosePipe> pipe(::popen(command.c_str(), "r"), {&status});
    if (!pipe) throw std::runtime_error("not run: " + command);
    for (int c = std::getc(pipe.get()); c != EOF; c = std::getc(pipe.get())) {
      output += static_cast<char>(c);
    }
  }
  if (status != 0) throw std::runtime_error("failed: " + command);
  return output;
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
