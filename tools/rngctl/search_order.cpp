#include "search_order.h"

#include "host.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <memory>
#include <sstream>

namespace {

struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

[[noreturn]] void Refuse() {
  throw Refusal(kNegativeAnswer, "The dynamic loader does not tell where it searches.");
}

// Without the ".." by which an installation finds its parts.
std::string Straight(const std::string& path) {
  std::error_code absent;
  const std::filesystem::path whole(path);
  const std::filesystem::path folder = weakly_canonical(whole.parent_path(), absent);
  return absent ? path : (folder / whole.filename()).string();
}

// All that the loader searches for what `library`, which is in the process, opens.
std::vector<std::string> ListSearched(const char* library) {
  const LibraryHandle handle(::dlopen(library, RTLD_LAZY | RTLD_NOLOAD));
  Dl_serinfo size;
  if (!handle || ::dlinfo(handle.get(), RTLD_DI_SERINFOSIZE, &size) != 0) Refuse();
  // A record that ends with as many paths as there are, then their text.
  const auto storage =
      std::make_unique<std::max_align_t[]>(size.dls_size / sizeof(std::max_align_t) + 1);
  auto* const paths = reinterpret_cast<Dl_serinfo*>(storage.get());
  paths->dls_size = size.dls_size;
  paths->dls_cnt = size.dls_cnt;
  if (::dlinfo(handle.get(), RTLD_DI_SERINFO, paths) != 0) Refuse();
  std::vector<std::string> directories;
  for (unsigned i = 0; i < paths->dls_cnt; ++i) {
    directories.emplace_back(paths->dls_serpath[i].dls_name);
  }
  return directories;
}

// As the loader lists it.
std::string AsListed(const std::string& directory) {
  if (directory.empty()) return ".";
  const auto last = directory.find_last_not_of('/');
  return last == std::string::npos ? "/" : directory.substr(0, last + 1);
}

// How many of the last directories are the system's. The loader marks none, but the C library has no
// run path: what is searched for it is what the environment names, then the system's.
std::size_t CountDefaults() {
  const std::vector<std::string> searched = ListSearched("libc.so.6");
  const char* const named = std::getenv("LD_LIBRARY_PATH");
  std::istringstream names(named ? named : "");
  std::size_t count = 0;
  for (std::string name; std::getline(names, name, ':') && count < searched.size();) {
    if (searched[count] == AsListed(name)) ++count;
  }
  return searched.size() - count;
}

}  // namespace

SearchOrder FindSearchOrder() {
  Dl_info place;
  if (!::dladdr(reinterpret_cast<void*>(&GetDefaultSettings), &place)) Refuse();
  SearchOrder order{Straight(place.dli_fname), ListSearched(place.dli_fname), {}};
  const std::size_t defaults = std::min(CountDefaults(), order.directories.size());
  const auto middle = order.directories.end() - static_cast<std::ptrdiff_t>(defaults);
  order.defaults.assign(middle, order.directories.end());
  order.directories.erase(middle, order.directories.end());
  for (std::string& directory : order.directories) directory = Straight(directory);
  return order;
}

std::string FindFirst(const std::string& file, const SearchOrder& order) {
  for (const auto* directories : {&order.directories, &order.defaults}) {
    for (const std::string& directory : *directories) {
      const std::filesystem::path path = std::filesystem::path(directory) / file;
      std::error_code absent;
      if (is_symlink(path, absent) || exists(path, absent)) return path;  // also a link to nothing
    }
  }
  return "";
}

std::string AsLibraryPath(const SearchOrder& order) {
  std::string text;
  for (const std::string& directory : order.directories)
    text += (text.empty() ? "" : ":") + directory;
  return text;
}
