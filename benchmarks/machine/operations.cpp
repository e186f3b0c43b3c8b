#include "benchmarks/machine/operations.h"

#include <dlfcn.h>
#include <stdexcept>

namespace {

constexpr std::uint32_t kAnyFlag = 0xFFFFFFFF;

void Require(bool isTrue) {
  if (!isTrue) throw std::runtime_error("the operation returned a wrong result");
}

void LoadAndUnload(const Machine& machine, const OpenLibrary*) {
  void* const handle = ::dlopen(machine.LibraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  Require(handle);
  ::dlclose(handle);
}

void StartAndStop(const Machine&, const OpenLibrary* library) {
  library->Initialize(library->GetDefaultSettings());
  library->ShutDown();
}

void FindLast(const Machine&, const OpenLibrary* library) { Require(library->GetRng("biocore")); }
void FindNone(const Machine&, const OpenLibrary* library) { Require(!library->GetRng("absent")); }

void CountAvailable(const Machine&, const OpenLibrary* library) {
  Require(library->GetAvailableRng(nullptr, kAnyFlag) == kAllPlugins);
}

void FillAvailable(const Machine&, const OpenLibrary* library) {
  IRngProvider* providers[kAllPlugins];
  Require(library->GetAvailableRng(providers, kAnyFlag) == kAllPlugins);
}

void GetType(const Machine&, const OpenLibrary* library) {
  const char* const type = library->GetDefaultSettings()->GetType();
  Require(type && *type == 'u');
}

void SetType(const Machine&, const OpenLibrary* library) {
  Require(library->GetDefaultSettings()->SetType("unixdev"));
}

}  // namespace

const std::vector<Operation>& AllOperations() {
  static const std::vector<Operation> operations = {
      {"StartAndStopTwelve", kAllPlugins, 3, false, StartAndStop},
      {"StartAndStopNone", 0, 3, false, StartAndStop},
      {"GetRngLast", kAllPlugins, 3, true, FindLast},
      {"GetRngMissing", kAllPlugins, 3, true, FindNone},
      {"GetAvailableRngCount", kAllPlugins, 3, true, CountAvailable},
      {"GetAvailableRngFill", kAllPlugins, 3, true, FillAvailable},
      {"GetType", 0, 3, false, GetType},
      {"GetType1000", 0, 1'000, false, GetType},
      {"GetType100000", 0, 100'000, false, GetType},
      {"SetType", 0, 3, false, SetType},
      {"SetType1000", 0, 1'000, false, SetType},
      {"SetType100000", 0, 100'000, false, SetType},
      {"LoadAndUnload", 0, 3, false, LoadAndUnload},
  };
  return operations;
}

const Operation& FindOperation(const std::string& name) {
  for (const Operation& operation : AllOperations()) {
    if (operation.name == name) return operation;
  }
  throw std::runtime_error("no such operation: " + name);
}

ReadyOperation::ReadyOperation(Machine::Library which, const Operation& wanted)
    : operation(wanted), machine(which, wanted.plugins) {
  machine.WriteProfile(operation.profileLines);
  machine.UseSettings();
  if (operation.run == LoadAndUnload) return;
  library = std::make_unique<OpenLibrary>(machine.LibraryPath());
  library->Initialize(library->GetDefaultSettings());
  Require(library->GetAvailableRng(nullptr, kAnyFlag) == operation.plugins);
  if (!operation.isStarted) library->ShutDown();
}

ReadyOperation::~ReadyOperation() {
  if (operation.isStarted) library->ShutDown();
}
