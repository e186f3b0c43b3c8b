#include "tools/rngctl/doctor/examine/started_generators.h"

#include "providers/catalogue.h"
#include "providers/library_handle.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/loader/search_order.h"

#include <algorithm>
#include <dlfcn.h>

namespace {

std::string FileAt(const void* address) {
  Dl_info info = {};
  return ::dladdr(address, &info) != 0 ? WithoutDotDot(info.dli_fname) : "";
}

}  // namespace

StartedGenerator Locate(IRngProvider* provider) {
  const void* const* const table = *reinterpret_cast<const void* const* const*>(provider);
  return {reinterpret_cast<std::uintptr_t>(provider), FileAt(table), FileAt(table[0])};
}

std::vector<TakenFile> ListTakenFiles(const std::vector<StartPart>& parts) {
  std::vector<TakenFile> taken;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    const bool wasTried = std::any_of(parts.begin(), parts.end(), [&row](const StartPart& part) {
      return part.kind == row.name;
    });
    if (!wasTried)
      continue;  // even this question would open another kind's file, which may be a pipe
    const LibraryHandle handle(::dlopen(row.libraryFile.c_str(), RTLD_LAZY | RTLD_NOLOAD));
    if (const link_map* const map = MapOf(handle.get())) {
      taken.push_back({row.name, WithoutDotDot(map->l_name)});
    }
  }
  return taken;
}
