#include "search_order.h"

#include "host.h"
#include "library_handle.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <memory>
#include <unistd.h>

namespace {

[[noreturn]] void Refuse() {
  throw Refusal(kNegativeAnswer, "The dynamic loader does not tell where it searches.");
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

// Whether the loader takes the file: it passes over one that it cannot read or that is made for
// another machine.
bool IsForThisMachine(const std::string& file) {
  if (::access(file.c_str(), R_OK) != 0) return false;
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(file, unknown))
    return true;  // reading it may wait for ever
  ElfW(Ehdr) header = {};
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(reinterpret_cast<char*>(&header), sizeof header)) return true;  // and fails then
  const bool isElf = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
  return !isElf || (header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_machine == EM_X86_64);
}

// Also links to nothing.
std::vector<std::string> ListFiles(const std::string& name,
                                   const std::vector<std::string>& directories) {
  std::vector<std::string> files;
  for (const std::string& directory : directories) {
    const std::filesystem::path path = std::filesystem::path(directory) / name;
    std::error_code absent;
    if (is_symlink(path, absent) || exists(path, absent)) files.push_back(path);
  }
  return files;
}

}  // namespace

std::string Straight(const std::string& path) {
  std::error_code absent;
  const std::filesystem::path whole(path);
  const std::filesystem::path folder = weakly_canonical(whole.parent_path(), absent);
  return absent ? path : (folder / whole.filename()).string();
}

std::vector<std::string> ListSystemDirectories() {
  std::vector<std::string> directories = ListSearched("libc.so.6");
  directories.erase(directories.begin());
  return directories;
}

std::string FindLibrary() {
  Dl_info place;
  if (!::dladdr(reinterpret_cast<void*>(&GetDefaultSettings), &place)) Refuse();
  return place.dli_fname;
}

SearchOrder FindSearchOrder(std::size_t systemDirectories) {
  const std::string library = FindLibrary();
  if (library.find_first_of(":;") != std::string::npos) {
    throw Refusal(kNegativeAnswer,
                  "The doctor does not examine a library in a folder whose name has "
                  "a colon or a semicolon, which divide search paths.");
  }
  SearchOrder order{Straight(library), ListSearched(library.c_str()), {}};
  const std::size_t defaults = std::min(systemDirectories, order.directories.size());
  const auto middle = order.directories.end() - static_cast<std::ptrdiff_t>(defaults);
  order.defaults.assign(middle, order.directories.end());
  order.directories.erase(middle, order.directories.end());
  for (std::string& directory : order.directories) directory = Straight(directory);
  return order;
}

std::string FindTaken(const std::string& name, const SearchOrder& order) {
  const std::vector<std::string> files = ListFiles(name, order.directories);
  const auto taken = std::find_if(files.begin(), files.end(), IsForThisMachine);
  return taken == files.end() ? "" : *taken;
}

std::string FindFirst(const std::string& name, const SearchOrder& order) {
  std::string taken = FindTaken(name, order);
  if (!taken.empty()) return taken;
  for (const auto* directories : {&order.directories, &order.defaults}) {
    const std::vector<std::string> files = ListFiles(name, *directories);
    if (!files.empty()) return files[0];
  }
  return "";
}

std::string AsLibraryPath(const SearchOrder& order) {
  std::string text;
  for (const std::string& directory : order.directories)
    text += (text.empty() ? "" : ":") + directory;
  return text;
}
