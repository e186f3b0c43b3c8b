#include "tools/rngctl/doctor/other_library.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> ListPlaces() {
  std::vector<std::string> places = ListLibraryPath();
  std::error_code unknown;
  const fs::path folder = fs::read_symlink("/proc/self/exe", unknown).parent_path();
  if (!unknown) places.insert(places.end(), {folder, folder.parent_path() / "lib"});
  return places;
}

}  // namespace

std::string WarnOfOtherLibrary(const SearchOrder& search) {
  const std::string name = fs::path(search.library).filename();
  for (const std::string& place : ListPlaces()) {
    const std::string other = FindAsLoaderDoes(name, WithProcessorDirectories({"", {place}, {}}));
    std::error_code unknown;
    if (other.empty() || fs::equivalent(other, search.library, unknown)) continue;
    return "Programs may load " + WithoutDotDot(other) + " instead of " + search.library +
           ", which rngctl uses: that depends on their run paths and on LD_LIBRARY_PATH. Remove "
           "the one that you do not need.";
  }
  return "";
}
