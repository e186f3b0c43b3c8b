// A typical host: starts the library, looks up every kind and the default, and stops. It writes what it
// sees line by line to the file in its argument, because a plug-in may end the process.

#include "tests/support/kinds.h"

#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

std::string g_file;

// Opens the file each time: a plug-in may close descriptors.
void Tell(const std::string& what) {
  const std::string line = what + "\n";
  const int file = ::open(g_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (::write(file, line.data(), line.size()) < 0) ::_exit(99);
  ::close(file);
}

// The file that holds the object's slots.
std::string FileOf(IRngProvider* provider) {
  Dl_info info = {};
  const void* const slots = *reinterpret_cast<void**>(provider);
  if (::dladdr(slots, &info) == 0 || !info.dli_fname) return "unknown";
  return std::filesystem::path(info.dli_fname).filename();
}

void AskForKinds() {
  for (const Kind& kind : AllKinds()) {
    IRngProvider* const provider = GetRng(kind.name.c_str());
    if (provider) Tell("kind " + kind.name + " " + FileOf(provider));
  }
}

bool IsUsable(const DefaultRngInfo& info) {
  IRngProvider* const provider = GetRng(info.type);
  return provider && (!*info.hardwareId || provider->SelectDevice(info.hardwareId));
}

void AskForDefault() {
  const char* const configured = GetDefaultSettings()->GetType();
  if (!configured || !*configured) return Tell("default none");
  DefaultRngInfo info;
  Tell(GetDefaultRng(&info, 0) == 1 && IsUsable(info) ? "default usable" : "default unusable");
}

}  // namespace

int main(int, char** arguments) {
  g_file = arguments[1];
  Initialize(GetDefaultSettings());
  Tell("started");
  AskForKinds();
  AskForDefault();
  Tell("asked");
  ShutDown();
  Tell("stopped");
}
