#include "tools/rngctl/doctor/causes/strays.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/causes/wrong_kind.h"
#include "tools/rngctl/terminal/likeness.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Row = ProviderCatalogueEntry;

constexpr char kSuffix[] = ".so";

// The name without the version behind ".so"; "" for anything else than a library.
std::string WithoutVersion(const std::string& name) {
  const std::size_t dot = name.find(kSuffix);
  const std::size_t end = dot == std::string::npos ? dot : dot + sizeof kSuffix - 1;
  if (end == std::string::npos) return "";
  const bool isVersion = name.find_first_not_of(".0123456789", end) == std::string::npos;
  return isVersion && (end == name.size() || name[end] == '.') ? name.substr(0, end) : "";
}

// "dsdr" of "librngdsdr.so" and of "rngdsdr.so"; "" for a name that is not like those of plug-ins.
std::string PluginPart(const std::string& library) {
  const std::string rest = library.starts_with("lib") ? library.substr(3) : library;
  if (!rest.starts_with("rng")) return "";
  if (rest.starts_with("rngaggregator") || rest == "rngcombine.so") return "";  // our own
  return rest.substr(3, rest.size() - 3 - (sizeof kSuffix - 1));
}

// The file name that the plug-in should have: the one for its factory, otherwise the most similar one.
std::string FindRightName(const fs::path& file) {
  if (const std::string own = FileNameByFactory(file); !own.empty()) return own;
  std::vector<std::string> known;
  std::vector<std::string> files;
  for (const Row& row : BuildProviderCatalogue()) {
    known.insert(known.end(), {PluginPart(row.libraryFile), row.name});
    files.insert(files.end(), 2, row.libraryFile);
  }
  const std::string alike =
      FindLikeness(PluginPart(WithoutVersion(file.filename().string())), known);
  const auto found = std::find(known.begin(), known.end(), alike);
  return alike.empty() ? "" : files[static_cast<std::size_t>(found - known.begin())];
}

StrayFile Describe(const fs::path& file) {
  const std::string right = FindRightName(file);
  if (right.empty()) {
    return {file, "no kind has a plug-in with this name",
            "Remove it, or give it the file name of its kind; provider.h lists them."};
  }
  const fs::path place = file.parent_path() / right;
  std::error_code absent;
  if (fs::exists(place, absent)) {
    return {file, "the library does not load a file of this name; it loads " + place.string(),
            "Remove whichever of the two is out of date."};
  }
  if (WithoutVersion(file.filename()) == right) {
    return {file, "the library looks for " + right + ", without a version",
            "Make " + place.string() + " a symbolic link to it."};
  }
  return {file, "no kind has a plug-in with this name; did you mean " + right + "?",
          "Rename it to " + place.string() + "."};
}

bool IsStray(const fs::path& file) {
  const std::string library = WithoutVersion(file.filename());
  if (library.empty() || PluginPart(library).empty()) return false;
  const ProviderCatalogue rows = BuildProviderCatalogue();
  const bool isKnown = std::any_of(
      rows.begin(), rows.end(), [&library](const Row& row) { return row.libraryFile == library; });
  // A plug-in may be a link to a file with a version.
  std::error_code absent;
  return !isKnown ||
         (library != file.filename() && !fs::exists(file.parent_path() / library, absent));
}

}  // namespace

std::vector<StrayFile> ListStrays(const SearchOrder& search) {
  std::vector<fs::path> files;
  for (const std::string& directory : search.directories) {
    std::error_code ended;
    for (fs::directory_iterator entry(directory, ended), end; !ended && entry != end;
         entry.increment(ended)) {
      if (IsStray(entry->path())) files.push_back(entry->path());
    }
  }
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  std::vector<StrayFile> strays;
  std::transform(files.begin(), files.end(), std::back_inserter(strays), Describe);
  return strays;
}
