#include "doctor_row.h"

#include "borrowed.h"
#include "child.h"
#include "doctor_report.h"
#include "host.h"
#include "library_handle.h"
#include "lifecycle_calls.h"
#include "providers/dll_loader.h"

#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <unistd.h>

using rngshared::smartwr::DllLoader;

namespace {

void Send(const char* key, const nlohmann::json& value) {
  nlohmann::json report;
  report[key] = value;
  SendReport(report);
}

void Begin(const char* step) { Send("step", step); }

std::string FileOf(void* handle) {
  const link_map* const map = MapOf(handle);
  return map ? map->l_name : "";
}

bool IsLoaded(const std::string& file) {
  return LibraryHandle(::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD)) != nullptr;
}

// The two calls by which the library looks for a name.
DoctorVerdict JudgeName(IRngProvider& provider, const std::string& expected) {
  const auto refuse = [](const std::string& fault) {
    Send("nameFault", fault);
    return DoctorVerdict::kNameless;
  };
  const std::int32_t size = provider.GetName(nullptr);
  if (size == 0) return refuse("it reports none");
  if (size < 0) {
    return refuse("it reports a size of " + std::to_string(size) +
                  ", and every search for a name fails that comes to it");
  }
  const auto length = static_cast<std::size_t>(size);
  const auto buffer = std::make_unique<char[]>(length);
  const std::int32_t again = provider.GetName(buffer.get());
  if (again != size) {
    return refuse("it reports a size of " + std::to_string(size) + ", then of " +
                  std::to_string(again));
  }
  const std::string name(buffer.get(), ::strnlen(buffer.get(), length));
  if (name.empty()) return refuse("it reports an empty one");
  Send("name", name);
  return name == expected ? DoctorVerdict::kLoaded : DoctorVerdict::kWrongName;
}

DoctorVerdict JudgeListed(IRngProvider& provider, const std::string& expected) {
  Send("isKept", true);
  Begin("name");
  const DoctorVerdict verdict = JudgeName(provider, expected);
  Begin("flags");
  if (provider.GetFlags() == 0) Send("isFlagless", true);
  return verdict;
}

// In a program it would wait for itself for ever: a start and a stop hold the lock all the time.
void StopAtCall(const char* function) {
  Send("called", function);
  ::_exit(kDone);
}

DoctorVerdict JudgeOpened(void* library, const ProviderCatalogueEntry& row) {
  void* const symbol = ::dlsym(library, row.factorySymbol.c_str());
  if (!symbol) return DoctorVerdict::kNoFactory;
  Begin("factory");
  IRngProvider* const provider = reinterpret_cast<RngFactory>(symbol)();
  if (!provider) return DoctorVerdict::kFactoryGaveNothing;
  Begin("settings");
  provider->SetSettings(GetDefaultSettings());
  Begin("available");
  const bool isAvailable = provider->IsAvailable();
  const DoctorVerdict verdict =
      isAvailable ? JudgeListed(*provider, row.name) : DoctorVerdict::kNotAvailable;
  Begin("release");
  provider->Release();
  return verdict;
}

}  // namespace

void ExamineRow(const ProviderCatalogueEntry& row, const std::string& fileToOpen) {
  WatchLifecycleCalls(StopAtCall);
  Begin("open");
  DllLoader library(fileToOpen.c_str());
  if (!library.GetHandle()) {
    Send("openError", ::dlerror());
    Send("verdict", DoctorVerdict::kCannotBeOpened);
    return Begin("end");
  }
  const std::string file = FileOf(library.GetHandle());
  Send("file", file);
  // Caught while the plug-in is open: what is thrown may be of a type that lives in it.
  try {
    Send("verdict", JudgeOpened(library.GetHandle(), row));
  } catch (const std::exception& error) {
    Send("thrown", error.what());
  } catch (...) {
    Send("thrown", "nothing that says why");
  }
  Begin("close");
  library.Unload();
  if (IsLoaded(file)) Send("stays", true);
  Begin("end");
}

void ExamineBinding(const std::string& fileToOpen) {
  void* const library = ::dlopen(fileToOpen.c_str(), RTLD_NOW);
  library ? Send("borrowed", FindBorrowed(library)) : Send("bindError", ::dlerror());
  ::_exit(kDone);
}
