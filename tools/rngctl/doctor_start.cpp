#include "doctor_start.h"

#include "child.h"
#include "host.h"
#include "providers/catalogue.h"
#include "search_order.h"

#include <algorithm>
#include <filesystem>
#include <link.h>
#include <set>
#include <unistd.h>

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
  std::transform(paths.begin(), paths.end(), paths.begin(), Straight);
  return paths;
}

bool FindsDefault() {
  DefaultRngInfo info;
  return GetDefaultRng(&info, 0) == 1 && GetRng(info.type) != nullptr;
}

void StartAskAndStop() {
  SendReport({{"step", "start"}});
  const StartedAggregator aggregator;
  SendReport({{"opened", ListOpenedPlugins()}, {"step", "default"}});
  SendReport({{"findsDefault", FindsDefault()}, {"step", "stop"}});
}

}  // namespace

void ExamineStart() {
  try {
    StartAskAndStop();
  } catch (...) {
    // What was thrown may be of a type that went with its plug-in: it is not looked at, nor destroyed.
    SendReport({{"thrown", true}});
    ::_exit(kDone);
  }
  SendReport({{"step", "end"}});
}
