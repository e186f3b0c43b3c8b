#ifndef TESTS_FAULTS_FAULT_SWEEP_H
#define TESTS_FAULTS_FAULT_SWEEP_H

#include "tests/faults/promised_library.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"

#include <functional>
#include <set>
#include <string>

/// The library whose calls follow the plan. It is used with the same words as the promised one.
class FaultyLibrary : public AggregatorLibrary {
 public:
  std::string Available(std::uint32_t mask) const;  ///< also checks that no more is written
  std::string Find(const char* name) const;
  IRngSettings* HostSettings() { return &settings; }

 private:
  FakeSettings settings;
};

/// One function that takes either library, as `[](auto& library) { ... }`.
template <typename Result>
struct Steps {
  template <typename Function>
  Steps(Function function) : real(function), promised(function) {}  // NOLINT: a lambda is one
  std::function<Result(FaultyLibrary&)> real;
  std::function<Result(PromisedLibrary&)> promised;
};

struct FaultSweep {
  std::string function;          ///< the exported one
  std::string state;             ///< in words, for the report
  std::set<std::string> faults;  ///< the calls that it makes, each of which is failed
  Arrangement arrangement;
  Steps<void> prelude;      ///< brings the library into the state
  Steps<std::string> call;  ///< gives everything that the caller receives, as text
  /// Where the number of allocations is the implementation's own affair, any of them fails between
  /// the same two calls to the outside.
  bool countsAllocations = true;

  /// Counts the calls of an unfailing run, then fails each in a fresh library, once and from then on.
  void Run() const;
  /// Nothing is called that could fail, so nothing can go wrong.
  void ExpectNoCall() const;

 private:
  bool Try(const FaultPlan& plan) const;
  void SweepOver(const std::string& called, std::size_t calls) const;
};

/// The 36 bytes, unused ones as dots, and the result before them.
template <typename Host>
std::string DefaultOf(Host& host, std::uint32_t mask) {
  DefaultRngInfo info;
  std::fill_n(info.type, sizeof info.type, '?');
  std::fill_n(info.hardwareId, sizeof info.hardwareId, '?');
  std::string result = "thrown";
  try {
    result = std::to_string(host.GetDefaultRng(&info, mask));
  } catch (const std::bad_alloc&) {
    result = "out of memory";
  }
  const std::string record = std::string(info.type, sizeof info.type) +
                             std::string(info.hardwareId, sizeof info.hardwareId);
  for (char c : record) result += c == '\0' ? '.' : c;
  return result;
}

void PrepareTree(const Arrangement& arrangement);
void CountInjected(const std::string& function, const std::string& where, std::size_t faults);

#endif
