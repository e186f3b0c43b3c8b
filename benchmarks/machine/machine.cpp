#include "benchmarks/machine/machine.h"

#include "benchmarks/machine/service.h"

#include <array>
#include <dlfcn.h>
#include <fstream>
#include <iomanip>
#include <stdexcept>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, kAllPlugins> kPluginFiles = {
    "librngbioqt.so", "librngbiox11.so",      "librngdsdr.so",        "librngaccord.so",
    "librngsobol.so", "librngjacartagost.so", "librngrutoken.so",     "librngesmartgost.so",
    "librngbiokb.so", "librngunixdev.so",     "librnggrandmaster.so", "librngbiocore.so"};

// A folder in memory if there is one, so that writing does not wait for a disk.
fs::path MemoryFolder() {
  const fs::path memory = "/dev/shm";
  return ::access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path();
}

}  // namespace

Machine::Machine(Library library, int plugins)
    : tree(fs::temp_directory_path()), settings(MemoryFolder()) {
  fs::create_directory(tree.path / "lib");
  fs::copy_file(library == Library::kOurs ? OUR_LIBRARY : BARE_LIBRARY, LibraryPath());
  fs::copy_file(fs::path(PARTS_DIR) / "libX11.so.6", tree.path / "lib/libX11.so.6");
  SetPlugins(plugins);
}

void Machine::SetPlugins(int count) const {
  for (int number = 0; number < kAllPlugins; ++number) {
    if (number >= count) {
      fs::remove(PluginPath(number));
    } else if (!fs::exists(PluginPath(number))) {
      fs::copy_file(fs::path(PARTS_DIR) / kPluginFiles[static_cast<std::size_t>(number)],
                    PluginPath(number));
    }
  }
}

void Machine::WriteProfile(long lines) const {
  std::ofstream profile(ProfilePath());
  if (lines > 3) profile << "[Others]\n";
  profile << std::setfill('0');  // lines of one length
  for (long line = 1; line < lines - 3; ++line) {
    profile << "entry" << std::setw(6) << line << "=some text\n";
  }
  profile << "[Devices]\nRandomNumberGeneratorType=unixdev\nRandomNumberGeneratorHardwareID=7\n";
}

std::string Machine::LibraryPath() const { return tree.path / "lib/librngaggregator.so"; }
std::string Machine::ProfilePath() const { return settings.path / "rng.ini"; }
std::string Machine::PluginPath(int number) const {
  return tree.path / "lib" / kPluginFiles.at(static_cast<std::size_t>(number));
}

void Machine::UseSettings() const { NameSettingsDirectory(settings.path.c_str()); }

#define FIND(function) function(reinterpret_cast<decltype(&::function)>(Find(#function)))

OpenLibrary::OpenLibrary(const std::string& path)
    : handle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)),
      FIND(Initialize),
      FIND(ShutDown),
      FIND(GetAvailableRng),
      FIND(GetRng),
      FIND(GetDefaultSettings) {}

OpenLibrary::~OpenLibrary() { ::dlclose(handle); }

void* OpenLibrary::Find(const char* name) const {
  void* const symbol = handle ? ::dlsym(handle, name) : nullptr;
  if (!symbol) throw std::runtime_error(::dlerror());
  return symbol;
}
