#include "tools/rngctl/loader/undeclared.h"

#include "providers/library_handle.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/loader/search_order.h"

namespace {

// Not what the aggregator itself needs from other libraries. This program defines some of its functions
// again, so the place of the first definition says nothing.
bool IsOfLibrary(const std::string& symbol) {
  const std::string file = FindLibrary();
  const LibraryHandle aggregator(::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  const void* const address = aggregator ? ::dlsym(aggregator.get(), symbol.c_str()) : nullptr;
  Dl_info place;
  return address && ::dladdr(address, &place) != 0 && file == place.dli_fname;
}

}  // namespace

Undeclared FindUndeclared(void* library) {
  Undeclared found;
  for (const std::string& name : ReadElfFacts(MapOf(library)->l_name).needs) {
    const bool isDeclared = ::dlsym(library, name.c_str()) != nullptr;
    if (isDeclared || !::dlsym(RTLD_DEFAULT, name.c_str())) continue;
    if (!IsOfLibrary(name)) return {name, false};
    if (found.symbol.empty()) found = {name, true};
  }
  return found;
}
