#include "providers/catalogue.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/loader/search_order.h"
#include "tools/rngctl/process/child.h"

#include <algorithm>
#include <filesystem>
#include <link.h>
#include <set>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

using Paths = std::vector<std::string>;

int AddName(dl_phdr_info* info, std::size_t, void* paths) {
  static_cast<Paths*>(paths)->emplace_back(info->dlpi_name);
  return 0;
}

Paths ListOpenedPlugins() {
  std::set<std::string> pluginFiles;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    pluginFiles.insert(row.libraryFile);
  }
  Paths paths;
  ::dl_iterate_phdr(AddName, &paths);
  std::erase_if(paths, [&pluginFiles](const std::filesystem::path& path) {
    return !pluginFiles.contains(path.filename());
  });
  std::transform(paths.begin(), paths.end(), paths.begin(), WithoutDotDot);
  return paths;
}

bool FindsDefault() {
  DefaultRngInfo info;
  return GetDefaultRng(&info, 0) == 1 && GetRng(info.type) != nullptr;
}

void Begin(StartStep step, StartAnswer& answer) {
  answer.step = step;
  Send(answer);
}

void StartAskAndStop(StartAnswer& answer) {
  Begin(StartStep::kStart, answer);
  Initialize(GetDefaultSettings());
  answer.opened = ListOpenedPlugins();
  Begin(StartStep::kDefault, answer);
  answer.findsDefault = FindsDefault();
  Begin(StartStep::kStop, answer);
  ShutDown();
}

}  // namespace

void ExamineStart() {
  StartAnswer answer;
  try {
    StartAskAndStop(answer);
  } catch (...) {
    // The type of the exception may be defined in a plug-in that is already closed: do not touch or
    // destroy it.
    answer.hasThrown = true;
    Send(answer);
    ::_exit(0);
  }
  Begin(StartStep::kEnd, answer);
}
