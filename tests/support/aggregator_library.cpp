#include "tests/support/aggregator_library.h"

#include "tests/support/all_bits.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

void* Open(const std::string& path) {
  void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) throw std::runtime_error(::dlerror());
  return handle;
}

}  // namespace

#define FIND(function) function(reinterpret_cast<decltype(&::function)>(Find(#function)))

AggregatorLibrary::AggregatorLibrary()
    : handle(Open(TreePath("lib/librngaggregator.so"))),
      FIND(Initialize),
      FIND(ShutDown),
      FIND(IsInitialized),
      FIND(GetAvailableRng),
      FIND(GetRng),
      FIND(IsInteractiveRng),
      FIND(GetDefaultRng),
      FIND(SetDefaultRng),
      FIND(GetDefaultSettings) {}

AggregatorLibrary::~AggregatorLibrary() { Close(); }

void AggregatorLibrary::Close() {
  if (handle) ::dlclose(handle);
  handle = nullptr;
}

void* AggregatorLibrary::Find(const char* name) const {
  void* const symbol = ::dlsym(handle, name);
  if (!symbol) throw std::runtime_error(std::string("not exported: ") + name);
  return symbol;
}

const char*& AggregatorLibrary::NameVariable(const std::string& variable) const {
  return *static_cast<const char**>(Find(variable.c_str()));
}

void AggregatorLibrary::Start(IRngSettings* settings, std::size_t count) const {
  Initialize(settings);
  ASSERT_TRUE(IsInitialized());
  ASSERT_EQ(static_cast<std::int32_t>(count), GetAvailableRng(nullptr, kAllBits));
}

std::vector<std::string> AggregatorLibrary::LoadedNames() const {
  std::vector<IRngProvider*> providers(
      static_cast<std::size_t>(GetAvailableRng(nullptr, kAllBits)));
  GetAvailableRng(providers.data(), kAllBits);
  std::vector<std::string> names;
  for (IRngProvider* provider : providers) names.push_back(ReportedName(*provider));
  return names;
}

std::string ReportedName(IRngProvider& provider) {
  std::string name(static_cast<std::size_t>(provider.GetName(nullptr)), '\0');
  provider.GetName(name.data());
  return name.c_str();
}

bool IsMapped(const std::string& fileName) {
  return ReadFile("/proc/self/maps").find("/" + fileName + "\n") != std::string::npos;
}
