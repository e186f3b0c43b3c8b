#include "benchmarks/timing/profile_timing.h"

#include "benchmarks/bare/blocks.h"
#include "benchmarks/bare/profile.h"
#include "benchmarks/machine/operations.h"
#include "benchmarks/timing/alternation.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr char kType[] = "unixdev";

void Require(bool isTrue) {
  if (!isTrue) throw std::runtime_error("the peer returned a wrong result");
}

void Read(ReadProfile read, const std::string& path) {
  char value[64] = {};
  Require(read(path.c_str(), kProfileSection, kProfileKey, value, sizeof value));
  Require(std::string(value) == kType);
}

void Write(WriteProfile write, const std::string& path) {
  Require(write(path.c_str(), kProfileSection, kProfileKey, kType));
}

std::shared_ptr<const Machine> MachineWithProfile(long lines) {
  const auto machine = std::make_shared<const Machine>(Machine::Library::kBare, 0);
  machine->WriteProfile(lines);
  return machine;
}

Side ReadingSide(ReadProfile read, long lines) {
  const auto machine = MachineWithProfile(lines);
  return {nullptr, [=, path = machine->ProfilePath()] { (void)machine, Read(read, path); }};
}

// Reads the written value back once, so that a peer that writes nothing does not count as fast.
Side WritingSide(WriteProfile write, long lines) {
  const auto machine = MachineWithProfile(lines);
  Write(write, machine->ProfilePath());
  Read(ReadValue, machine->ProfilePath());
  return {nullptr, [=, path = machine->ProfilePath()] { (void)machine, Write(write, path); }};
}

// The library itself, to compare with the plain loops.
Side LibrarySide(const char* name) {
  const auto ready = std::make_shared<ReadyOperation>(Machine::Library::kOurs, FindOperation(name));
  return {[ready] { ready->GetMachine().UseSettings(); }, [ready] { ready->Run(); }};
}

}  // namespace

void RegisterProfilePeer(const std::string& name, ReadProfile read, WriteProfile write) {
  for (const long lines : {3L, 1'000L}) {
    const std::string suffix = "/" + name + "/" + std::to_string(lines);
    RegisterPair("read" + suffix, [=] {
      return Pair{ReadingSide(read, lines), ReadingSide(ReadValue, lines)};
    });
    if (!write) continue;
    RegisterPair("write" + suffix, [=] {
      return Pair{WritingSide(write, lines), WritingSide(WriteValue, lines)};
    });
  }
}

void RegisterPlainLoops() {
  RegisterPair("plain/GetType1000", [] {
    return Pair{LibrarySide("GetType1000"), ReadingSide(ReadValueInBlocks, 1'000)};
  });
  RegisterPair("plain/SetType1000", [] {
    return Pair{LibrarySide("SetType1000"), WritingSide(WriteValueInBlocks, 1'000)};
  });
}
