#ifndef BENCHMARKS_MACHINE_OPERATIONS_H
#define BENCHMARKS_MACHINE_OPERATIONS_H

#include "benchmarks/machine/machine.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// An operation to measure, with either library. It throws when its result is wrong, so that only
/// working operations are measured.
struct Operation {
  const char* name;
  int plugins;
  long profileLines;
  bool isStarted;  ///< prepared by a start, which is not measured

  /// One run; `library` is null for the operation that opens it.
  void (*run)(const Machine& machine, const OpenLibrary* library);
};

const std::vector<Operation>& AllOperations();
const Operation& FindOperation(const std::string& name);  ///< throws when there is none

/// An operation prepared on its own machine.
class ReadyOperation {
 public:
  ReadyOperation(Machine::Library library, const Operation& operation);
  ReadyOperation(const ReadyOperation&) = delete;
  ReadyOperation& operator=(const ReadyOperation&) = delete;
  ~ReadyOperation();

  void Run() const { operation.run(machine, library.get()); }
  const Machine& GetMachine() const { return machine; }

 private:
  const Operation operation;
  const Machine machine;
  std::unique_ptr<OpenLibrary> library;
};

#endif
