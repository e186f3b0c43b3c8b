#include "tools/rngctl/loader/search_order.h"

#include "providers/library_handle.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <memory>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

[[noreturn]] void Refuse() {
  throw Refusal(kNegativeAnswer, "The dynamic loader does not report its search path.");
}

// All directories that the loader searches for what `library`, which is in the process, opens.
std::vector<std::string> ListSearched(const char* library) {
  const LibraryHandle handle(::dlopen(library, RTLD_LAZY | RTLD_NOLOAD));
  Dl_serinfo size;
  if (!handle || ::dlinfo(handle.get(), RTLD_DI_SERINFOSIZE, &size) != 0) Refuse();
  // The record ends with the array of paths, and their text follows.
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

// Whether the loader takes the file: it skips files that it cannot read or that are built for another
// machine.
bool IsForThisMachine(const std::string& file) {
  if (::access(file.c_str(), R_OK) != 0) return false;
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(file, unknown))
    return true;  // reading it might never return
  ElfW(Ehdr) header = {};
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(reinterpret_cast<char*>(&header), sizeof header)) return true;  // then it fails
  const bool isElf = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
  return !isElf || (header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_machine == EM_X86_64);
}

// Includes dangling links.
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

// The levels of the architecture that this processor has, highest first.
std::vector<std::string> ListProcessorLevels() {
  const bool isV2 = __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
  const bool isV3 = isV2 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") &&
                    __builtin_cpu_supports("fma");
  const bool isV4 = isV3 && __builtin_cpu_supports("avx512bw") &&
                    __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  std::vector<std::string> levels;
  if (isV4) levels.emplace_back("x86-64-v4");
  if (isV3) levels.emplace_back("x86-64-v3");
  if (isV2) levels.emplace_back("x86-64-v2");
  return levels;
}

}  // namespace

std::string WithoutDotDot(const std::string& path) {
  std::error_code absent;
  const std::filesystem::path whole(path);
  const std::filesystem::path folder = weakly_canonical(whole.parent_path(), absent);
  return absent ? path : (folder / whole.filename()).string();
}

std::vector<std::string> ListSystemDirectories(const std::string& given) {
  std::vector<std::string> directories = ListSearched("libc.so.6");
  // Only the first: it may be a system directory, too.
  const auto first = std::find(directories.begin(), directories.end(), given);
  if (first != directories.end()) directories.erase(first);
  return directories;
}

std::string FindLibrary() {
  Dl_info place;
  if (!::dladdr(reinterpret_cast<void*>(&GetDefaultSettings), &place)) Refuse();
  return place.dli_fname;
}

SearchOrder FindSearchOrder(const std::vector<std::string>& systemDirectories) {
  const std::string library = FindLibrary();
  if (library.find_first_of(":;$") != std::string::npos) {
    throw Refusal(kNegativeAnswer,
                  "The doctor cannot examine a library in a folder whose name has a colon, a "
                  "semicolon or a dollar sign: in search paths these have a meaning of their own.");
  }
  SearchOrder order{WithoutDotDot(library), ListSearched(library.c_str()), systemDirectories};
  const std::size_t ours =
      order.directories.size() - std::min(order.directories.size(), systemDirectories.size());
  order.directories.resize(ours);
  for (std::string& directory : order.directories) directory = WithoutDotDot(directory);
  return order;
}

std::string FindAsLoaderDoes(const std::string& name, const SearchOrder& order) {
  const std::vector<std::string> files = ListFiles(name, order.directories);
  const auto taken = std::find_if(files.begin(), files.end(), IsForThisMachine);
  return taken == files.end() ? "" : *taken;
}

std::string FindFirst(const std::string& name, const SearchOrder& order) {
  std::string taken = FindAsLoaderDoes(name, order);
  if (!taken.empty()) return taken;
  for (const auto* directories : {&order.directories, &order.defaults}) {
    const std::vector<std::string> files = ListFiles(name, *directories);
    if (!files.empty()) return files[0];
  }
  return "";
}

SearchOrder WithProcessorDirectories(const SearchOrder& order) {
  SearchOrder expanded = order;
  expanded.directories.clear();
  for (const std::string& directory : order.directories) {
    for (const std::string& level : ListProcessorLevels()) {
      expanded.directories.push_back(
          (std::filesystem::path(directory) / "glibc-hwcaps" / level).string());
    }
    expanded.directories.push_back(directory);
  }
  return expanded;
}

std::string AsLibraryPath(const SearchOrder& order) {
  std::string text;
  for (const std::string& directory : order.directories)
    text += (text.empty() ? "" : ":") + directory;
  return text;
}

std::vector<std::string> ListLibraryPath() {
  const char* const variable = std::getenv("LD_LIBRARY_PATH");
  std::string rest = variable ? variable : "";
  std::vector<std::string> directories;
  while (!rest.empty()) {
    const std::size_t end = rest.find_first_of(":;");
    const std::string directory = rest.substr(0, end);
    directories.push_back(directory.empty() ? "." : directory);
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
  }
  return directories;
}

std::string RunPathOf(const std::string& library) {
  const LibraryHandle handle(::dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  const link_map* const map = MapOf(handle.get());
  const char* texts = nullptr;
  ElfW(Xword) place = 0;
  for (const ElfW(Dyn)* entry = map ? map->l_ld : nullptr; entry && entry->d_tag != DT_NULL;
       ++entry) {
    // The loader has replaced the offset in the file with an address.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    if (entry->d_tag == DT_STRTAB) texts = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    if (entry->d_tag == DT_RPATH || entry->d_tag == DT_RUNPATH) place = entry->d_un.d_val;
  }
  return texts && place ? texts + place : "";
}
