#include "settings/known_path.h"

#include "providers/library_handle.h"

#include <cstdint>
#include <cstring>
#include <dlfcn.h>

// Weak, so that the library uses a service already present in the process and need not link with the
// service's own. With hidden visibility the reference would be bound to null at link time.
extern "C" __attribute__((weak, visibility("default"))) std::int32_t CKP_GetPath(
    std::int32_t id, char* buffer, std::uint64_t* size, void* reserved);

namespace {

enum KnownPath : std::int32_t { KnownPathDataDir = 0, KnownPathSettingsDir = 2 };

constexpr std::size_t kPathSize = 256;

std::optional<std::string> Ask(decltype(&CKP_GetPath) getPath, KnownPath id) {
  char directory[kPathSize] = {};
  std::uint64_t size = kPathSize;
  if (getPath(id, directory, &size, nullptr) != 0) return std::nullopt;
  // The service must terminate the path; if it does not, the path ends with the buffer.
  std::string path;
  path.reserve(kPathSize);  // room for what callers append
  path.assign(directory, ::strnlen(directory, kPathSize));
  return path;
}

std::optional<std::string> FindDirectory(KnownPath id, const char* fixedDirectory) {
  if (CKP_GetPath) return Ask(CKP_GetPath, id);
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NODELETE));
  if (!library) return fixedDirectory;
  void* const getPath = ::dlsym(library.get(), "CKP_GetPath");
  if (!getPath) return std::nullopt;
  return Ask(reinterpret_cast<decltype(&CKP_GetPath)>(getPath), id);
}

}  // namespace

std::optional<std::string> FindSettingsDirectory() {
  return FindDirectory(KnownPathSettingsDir, RNG_SETTINGS_DIR);
}

std::optional<std::string> FindDataDirectory() {
  return FindDirectory(KnownPathDataDir, RNG_DATA_DIR);
}
