#include "tools/rngctl/doctor/examine/dependencies.h"

#include <algorithm>
#include <iterator>
#include <link.h>

namespace {

int Note(dl_phdr_info* library, std::size_t, void* files) {
  static_cast<LoadedFiles*>(files)->insert(library->dlpi_name);
  return 0;
}

}  // namespace

LoadedFiles ListLoadedFiles() {
  LoadedFiles files;
  ::dl_iterate_phdr(Note, &files);
  return files;
}

std::vector<std::string> ListLoadedSince(const LoadedFiles& before, const std::string& plugin) {
  LoadedFiles now = ListLoadedFiles();
  now.erase(plugin);
  std::vector<std::string> files;
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                      std::back_inserter(files));
  return files;
}
