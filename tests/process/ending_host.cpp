// Starts the library and ends as its first argument says. Tells, on standard output, what becomes of
// the plug-ins. A host that opens the library takes its path as the second argument.

#include "tests/support/all_bits.h"
#include "tests/support/fakes.h"

#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

// Unbuffered: some endings write nothing out.
void Say(const std::string& text) {
  const std::string line = text + "\n";
  if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) std::abort();
}

}  // namespace

#if IS_LINKED
namespace {

constexpr struct Library {
  decltype(&::Initialize) Initialize = ::Initialize;
  decltype(&::ShutDown) ShutDown = ::ShutDown;
  decltype(&::GetAvailableRng) GetAvailableRng = ::GetAvailableRng;
} g_library;

void Open(const char*) {}

}  // namespace
#else
#include <dlfcn.h>

namespace {

struct Library {
  decltype(&::Initialize) Initialize;
  decltype(&::ShutDown) ShutDown;
  decltype(&::GetAvailableRng) GetAvailableRng;
} g_library;

void Open(const char* path) {
  void* const handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!handle) std::abort();
  const auto find = [&](auto& function, const char* name) {
    function =
        reinterpret_cast<std::remove_reference_t<decltype(function)> >(::dlsym(handle, name));
    if (!function) std::abort();
  };
  find(g_library.Initialize, "Initialize");
  find(g_library.ShutDown, "ShutDown");
  find(g_library.GetAvailableRng, "GetAvailableRng");
}

}  // namespace
#endif

namespace {

void TellOf(const char* kind) {
  for (const char* what : {"Release", "closed"}) {
    Fake(kind).hooks[what] = [kind, what] { Say(std::string(kind) + '.' + what); };
  }
}

// When an ending calls it, the exception has nowhere else to go.
void Stop() {
  try {
    Say("ShutDown");
    g_library.ShutDown();
    Say("stopped");
  } catch (const std::exception& failure) {
    Say(failure.what());
  }
}

void StopUnguarded() { g_library.ShutDown(); }

struct StopsWhenDestroyed {
  bool isArmed = false;
  ~StopsWhenDestroyed() {
    if (isArmed) Stop();
  }
};

StopsWhenDestroyed g_global;  // built before main, whenever that loads the library

void RegisterBeforeTheLibrary(const std::string& ending) {
  if (ending == "atexit_before_load") std::atexit(Stop);
  if (ending == "atexit_before_load_unguarded") std::atexit(StopUnguarded);
}

void RegisterBeforeTheStart(const std::string& ending) {
  if (ending == "static_global") g_global.isArmed = true;
  if (ending == "atexit_before_start") std::atexit(Stop);
}

void RegisterAfterTheStart(const std::string& ending) {
  if (ending == "static_local") {
    static StopsWhenDestroyed local;
    local.isArmed = true;
  }
  if (ending == "atexit_after_start") std::atexit(Stop);
  if (ending == "quick_exit_handler") std::at_quick_exit(Stop);
}

[[noreturn]] void End(const std::string& ending) {
  if (ending == "_exit") ::_exit(0);
  if (ending.find("quick_exit") == 0) std::quick_exit(0);
  if (ending == "throw") throw std::runtime_error("nobody catches this");
  std::exit(0);
}

#if IS_LINKED
// The program's own code that runs before its libraries are initialised.
void PreInitialize(int, char** arguments, char**) { RegisterBeforeTheLibrary(arguments[1]); }
__attribute__((section(".preinit_array"), used)) void (*g_preInitialize)(int, char**,
                                                                         char**) = PreInitialize;
#endif

}  // namespace

int main(int, char** arguments) {
  const std::string ending = arguments[1];
  if (!IS_LINKED) RegisterBeforeTheLibrary(ending);
  TellOf("dsdr");
  TellOf("accord");
  Open(arguments[2]);
  RegisterBeforeTheStart(ending);
  g_library.Initialize(nullptr);
  RegisterAfterTheStart(ending);
  Say(std::to_string(g_library.GetAvailableRng(nullptr, kAllBits)) + " loaded");
  if (ending == "return") return 0;
  End(ending);
}
