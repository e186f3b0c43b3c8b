// The loading of the library itself.

#include "tests/faults/fault_sweep.h"
#include "tests/support/tree.h"

#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <new>

namespace {

// The system's header promises that dlopen throws nothing, and the compiler would end the process.
void* (*const volatile g_open)(const char* path, int mode) = &::dlopen;

// The catalogue's files and factories, as far as a string does not hold them in itself.
std::size_t LongTexts() {
  const std::size_t inside = std::string().capacity();
  std::size_t count = 0;
  for (const Kind& kind : AllKinds()) {
    count += kind.libraryFile.size() > inside;
    count += kind.factory.size() > inside;
  }
  return count;
}

// Loads a library that the process has not seen yet.
std::string LoadAfresh(std::size_t number) {
  const std::string path = TreePath("lib/load" + std::to_string(number) + ".so");
  std::filesystem::copy_file(FAULTY_LIBRARY, path);
  Faults().isArmed = true;
  std::string outcome = "loaded";
  try {
    void* const handle = g_open(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    Faults().isArmed = false;
    if (handle) ::dlclose(handle);
  } catch (const std::bad_alloc&) {
    outcome = "out of memory";
  }
  Faults().isArmed = false;
  return outcome;
}

}  // namespace

TEST(LoadFaults, OutOfMemoryLeavesTheLoadingWithNothingAllocated) {
  Faults() = {};
  ASSERT_EQ("loaded", LoadAfresh(0));
  const std::size_t calls = Faults().calls["operator new"];
  ASSERT_EQ(LongTexts(), calls);
  for (std::size_t number = 1; number <= calls; ++number) {
    Faults() = {};
    Faults().function = "operator new";
    Faults().number = number;
    EXPECT_EQ("out of memory", LoadAfresh(number)) << number;
    EXPECT_EQ(1U, Faults().injected);
    EXPECT_EQ(0, Faults().alive) << number;
  }
  CountInjected("the loading", "operator new", calls);
}
