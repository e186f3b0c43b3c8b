#include "benchmarks/timing/module_timing.h"

#include "benchmarks/machine/folder.h"
#include "benchmarks/machine/operations.h"
#include "benchmarks/timing/alternation.h"

#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

// Twelve copies of one file, which the loader treats as twelve libraries.
class Modules {
 public:
  explicit Modules(const fs::path& module) : folder(fs::temp_directory_path()) {
    for (int number = 0; number < kAllPlugins; ++number) {
      paths.push_back(folder.path / ("module" + std::to_string(10 + number) + ".so"));
      fs::copy_file(module, paths.back());
    }
  }

  std::vector<std::string> paths;

 private:
  const Folder folder;
};

void StartBarely(const std::vector<std::string>& paths) {
  std::vector<void*> handles;
  for (const std::string& path : paths) {
    void* const handle = ::dlopen(path.c_str(), RTLD_LAZY);
    void* const factory = handle ? ::dlsym(handle, "GetModule") : nullptr;
    if (!factory || !reinterpret_cast<void* (*)()>(factory)()) throw std::runtime_error(path);
    handles.push_back(handle);
  }
  for (void* handle : handles) ::dlclose(handle);
}

Side MakeSide(const std::string& module, const StartModules& start) {
  const auto modules = std::make_shared<Modules>(module);
  return {nullptr, [=] { start(modules->paths); }};
}

}  // namespace

void RegisterModulePeer(const std::string& name, const std::string& module, StartModules start) {
  RegisterPair("modules/" + name, [=] {
    return Pair{MakeSide(module, start), MakeSide(BARE_MODULE, StartBarely)};
  });
}

void RegisterOwnModules() {
  RegisterPair("modules/rngaggregator", [] {
    const auto ready = std::make_shared<ReadyOperation>(Machine::Library::kOurs,
                                                        FindOperation("StartAndStopTwelve"));
    return Pair{{nullptr, [=] { ready->Run(); }}, MakeSide(BARE_MODULE, StartBarely)};
  });
}
