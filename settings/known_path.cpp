#include "settings/known_path.h"

#include "settings/join.h"

#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <memory>

// Weak, so that a service which the process already has is used without our needing its library.
// Hidden visibility would bind the reference to null for ever.
extern "C" __attribute__((weak, visibility("default"))) std::int32_t CKP_GetPath(
    std::int32_t id, char* buffer, std::uint64_t* size, void* reserved);

namespace {

enum KnownPath : std::int32_t { KnownPathDataDir = 0, KnownPathSettingsDir = 2 };

constexpr std::size_t kPathSize = 256;

// Not the plug-ins' loader: this library is opened in another mode.
struct CloseLibrary {
  void operator()(void* handle) const { ::dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

std::optional<std::string> Ask(decltype(&CKP_GetPath) getPath, KnownPath id,
                               std::string_view ending) {
  char directory[kPathSize] = {};
  std::uint64_t size = kPathSize;
  if (getPath(id, directory, &size, nullptr) != 0) return std::nullopt;
  // The terminator is the service's duty; without one, the text ends with the buffer.
  return Join({directory, ::strnlen(directory, kPathSize)}, ending);
}

std::optional<std::string> FindPath(KnownPath id, const char* fixedDirectory,
                                    std::string_view ending) {
  if (CKP_GetPath) return Ask(CKP_GetPath, id, ending);
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NODELETE));
  if (!library) return Join(fixedDirectory, ending);
  void* const getPath = ::dlsym(library.get(), "CKP_GetPath");
  if (!getPath) return std::nullopt;
  return Ask(reinterpret_cast<decltype(&CKP_GetPath)>(getPath), id, ending);
}

}  // namespace

std::optional<std::string> FindSettingsPath(std::string_view ending) {
  return FindPath(KnownPathSettingsDir, RNG_SETTINGS_DIR, ending);
}

std::optional<std::string> FindDataDirectory() {
  return FindPath(KnownPathDataDir, RNG_DATA_DIR, "");
}
