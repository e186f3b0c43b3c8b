#include "benchmarks/timing/peers/peers.h"
#include "benchmarks/timing/profile_timing.h"

#include <cstring>
#include <glib.h>
#include <memory>

namespace {

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { ::g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

KeyFile Load(const char* path) {
  KeyFile file(::g_key_file_new());
  const bool isLoaded =
      ::g_key_file_load_from_file(file.get(), path, G_KEY_FILE_KEEP_COMMENTS, nullptr);
  return isLoaded ? std::move(file) : nullptr;
}

bool Read(const char* path, const char* section, const char* key, char* buffer, std::size_t size) {
  const KeyFile file = Load(path);
  if (!file) return false;
  gchar* const value = ::g_key_file_get_string(file.get(), section, key, nullptr);
  if (!value) return false;
  ::g_strlcpy(buffer, value, size);
  ::g_free(value);
  return true;
}

bool Write(const char* path, const char* section, const char* key, const char* value) {
  const KeyFile file = Load(path);
  if (!file) return false;
  ::g_key_file_set_string(file.get(), section, key, value);
  return ::g_key_file_save_to_file(file.get(), path, nullptr);
}

}  // namespace

void RegisterGKeyFile() { RegisterProfilePeer("GKeyFile", Read, Write); }
