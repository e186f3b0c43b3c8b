#include "providers/dll_loader.h"
#include "providers/library_handle.h"
#include "tools/rngctl/channel/immortal.h"
#include "tools/rngctl/channel/last_words.h"
#include "tools/rngctl/doctor/examine/answers.h"
#include "tools/rngctl/doctor/examine/dependencies.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/loader/undeclared.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/process/lifecycle_calls.h"
#include "tools/rngctl/process/state.h"

#include <chrono>
#include <cxxabi.h>
#include <optional>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

using rngshared::smartwr::DllLoader;

namespace {

using Clock = std::chrono::steady_clock;

// Global, because the plug-in may call Initialize from anywhere.
Immortal<PluginAnswer> g_immortalAnswer;
PluginAnswer& g_answer = g_immortalAnswer.value;
Clock::time_point g_began;

void Begin(PluginStep step) {
  g_answer.step = step;
  g_answer.seconds = std::chrono::duration<double>(Clock::now() - g_began).count();
  Send(g_answer);
}

std::string FileOf(void* handle) {
  const link_map* const map = MapOf(handle);
  return map ? map->l_name : "";
}

bool IsLoaded(const std::string& file) {
  return LibraryHandle(::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD)) != nullptr;
}

void AskListed(IRngProvider& provider) {
  g_answer.isKept = true;
  Begin(PluginStep::kName);
  g_answer.name = AskForName(provider);
  Begin(PluginStep::kFlags);
  g_answer.isFlagless = provider.GetFlags() == 0;
}

void AskForDataFile(const ProviderCatalogueEntry& row) {
  if (row.name == rngDsdr) g_answer.dataFile = GetDefaultSettings()->GetDsdrFilePath();
}

// In a host this call would deadlock: start and stop hold the lock throughout.
void StopAtCall(LifecycleFunction function) {
  g_answer.called = function;
  Send(g_answer);
  ::_exit(0);
}

PluginOutcome Treat(void* library, const ProviderCatalogueEntry& row,
                    const ProcessSnapshot& before) {
  void* const symbol = ::dlsym(library, row.factorySymbol.c_str());
  if (!symbol) return PluginOutcome::kNoFactory;
  Begin(PluginStep::kFactory);
  IRngProvider* const provider = reinterpret_cast<RngFactory>(symbol)();
  if (!provider) {
    AskForDataFile(row);
    return PluginOutcome::kFactoryReturnedNull;
  }
  Begin(PluginStep::kSettings);
  provider->SetSettings(GetDefaultSettings());
  Begin(PluginStep::kAvailable);
  const bool isAvailable = provider->IsAvailable();
  isAvailable ? AskListed(*provider) : AskForDataFile(row);
  AddChanges(g_answer.changes, before);  // in a host they last until the release
  Begin(PluginStep::kRelease);
  provider->Release();
  return isAvailable ? PluginOutcome::kKept : PluginOutcome::kNotAvailable;
}

// Catches while the plug-in is open: the type of the exception may be defined in it.
void TreatCaught(void* library, const ProviderCatalogueEntry& row, const ProcessSnapshot& before) {
  try {
    g_answer.outcome = Treat(library, row, before);
  } catch (const abi::__forced_unwind&) {
    throw;  // pthread_exit, which must reach the end of the thread
  } catch (...) {
    g_answer.threwIn = g_answer.step;
    g_answer.exception = MessageOfException();
  }
}

// A static constructor may throw through the loader, which cannot be used afterwards.
void Open(std::optional<DllLoader>& library, const std::string& path) {
  try {
    library.emplace(path.c_str());
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (...) {
    g_answer.threwIn = g_answer.step;
    g_answer.exception = MessageOfException();
    Begin(PluginStep::kEnd);
    ::_exit(0);
  }
}

}  // namespace

void ExaminePlugin(const ProviderCatalogueEntry& row, const std::string& path) {
  WatchLifecycleCalls(StopAtCall);
  const ProcessSnapshot before = CaptureProcessState();
  g_began = Clock::now();
  const LoadedFiles loaded = ListLoadedFiles();
  Begin(PluginStep::kOpen);
  std::optional<DllLoader> library;
  Open(library, path);
  if (!library->GetHandle()) {
    g_answer.openError = ::dlerror();
    g_answer.outcome = PluginOutcome::kNotOpened;
    return Begin(PluginStep::kEnd);
  }
  g_answer.file = FileOf(library->GetHandle());
  g_answer.dependencies = ListLoadedSince(loaded, g_answer.file);
  TreatCaught(library->GetHandle(), row, before);
  g_answer.dependencies = ListLoadedSince(loaded, g_answer.file);  // it may have opened more
  Begin(PluginStep::kClose);
  library->Unload();
  Begin(PluginStep::kEnd);
  g_answer.staysLoaded = IsLoaded(g_answer.file);
  AddChanges(g_answer.changes, before);
  Send(g_answer);
}

void ExamineBinding(const std::string& path) {
  BindingAnswer answer;
  void* const library = ::dlopen(path.c_str(), RTLD_NOW);
  if (library) {
    const Undeclared found = FindUndeclared(library);
    answer.undeclared = found.symbol;
    answer.isOfLibrary = found.isOfLibrary;
  } else {
    answer.bindError = ::dlerror();
  }
  Send(answer);
  ::_exit(0);
}
