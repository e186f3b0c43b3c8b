#include "tests/faults/promised_library.h"

#include "tests/support/tree.h"

#include <algorithm>
#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <cstring>
#include <new>

namespace {

const std::string kX11File = "libX11.so.6";

bool IsTooLong(const char* text) { return text && std::strlen(text) > 17; }
bool IsSet(const char* text) { return text && *text; }

}  // namespace

PromisedLibrary::PromisedLibrary(const Arrangement& world) : arrangement(world) {
  const std::string profile = TreePath("etc/rng.ini");
  for (const std::string& path : {TreePath("etc"), std::string(RNG_SETTINGS_DIR)}) {
    for (const std::string& folder : FoldersOf(path)) directories.insert(folder);
  }
  if (world.profile) {
    files[profile] = *world.profile;
    directories.insert(TreePath("etc"));
  }
  if (world.isUnwritable) directories.insert(profile + ".tmp");
}

// --- What is asked of the system

void PromisedLibrary::Log(const std::string& who, const std::string& what) {
  log += (log.empty() ? "" : " ") + who + "." + what;
}

// An interrupted call is repeated; any other result is an exception.
void PromisedLibrary::Lock() {
  while (Strikes("pthread_mutex_lock")) {
    if (faults.lockResult != EINTR) {
      throw boost::lock_error(faults.lockResult, "boost: mutex lock failed in pthread_mutex_lock");
    }
  }
}

void PromisedLibrary::Allocate() {
  const bool isOut = outOfMemoryAt && outOfMemoryAt->logged == log.size() &&
                     outOfMemoryAt->calls == CallsOutside(faults);
  if (Strikes("operator new") || isOut) throw std::bad_alloc();
}

void PromisedLibrary::OpenLibrary(const std::string& who, const std::string& file) {
  if (holders[file]++ == 0) Log(who, "opened");
}

void PromisedLibrary::CloseLibrary(const std::string& who, const std::string& file) {
  if (Strikes("dlclose")) return;  // it stays, and nobody minds
  if (--holders[file] == 0) Log(who, "closed");
}

// --- Start and stop

// A lookup counts as failed when dlerror says so.
bool PromisedLibrary::FindInX11() {
  const bool isMissing = Strikes("dlsym");
  const bool isReported = Strikes("dlerror");
  if (!isMissing && !isReported) return true;
  CloseLibrary("x11", kX11File);
  return false;
}

bool PromisedLibrary::Probe() {
  if (Strikes("dlopen")) return false;
  OpenLibrary("x11", kX11File);
  if (!FindInX11()) return false;
  Log("x11", "XOpenDisplay");
  if (!arrangement.hasDisplay) {
    CloseLibrary("x11", kX11File);
    return false;
  }
  if (!FindInX11()) return false;  // the connection is left open
  Log("x11", "XCloseDisplay");
  CloseLibrary("x11", kX11File);
  return true;
}

void PromisedLibrary::Load(const Kind& row) {
  const auto& plugins = arrangement.plugins;
  if (row.libraryFile.size() > std::string().capacity())
    Allocate();  // the row's own copy of the name
  const bool hasDisplay = Probe();
  if (row.needsDisplay && !hasDisplay) return;
  if (Strikes("dlopen")) return;
  if (std::find(plugins.begin(), plugins.end(), row.name) == plugins.end()) return;
  OpenLibrary(row.name, row.libraryFile);
  if (Strikes("dlsym")) return CloseLibrary(row.name, row.libraryFile);
  Log(row.name, "factory");
  if (arrangement.givesNull.count(row.name)) return CloseLibrary(row.name, row.libraryFile);
  Log(row.name, "SetSettings");
  Log(row.name, "IsAvailable");
  if (arrangement.unavailable.count(row.name)) {
    Log(row.name, "Release");
    return CloseLibrary(row.name, row.libraryFile);
  }
  // When the list cannot grow, the library stays open.
  if (listed.size() == listed.capacity()) Allocate();
  listed.push_back(row.name);
}

void PromisedLibrary::Initialize(IRngSettings* newSettings) {
  Lock();
  if (++count != 1) return;
  settings = newSettings;
  for (const Kind& row : AllKinds()) Load(row);
}

void PromisedLibrary::ShutDown() {
  Lock();
  if (--count != 0) return;
  for (const std::string& kind : listed) {
    Log(kind, "Release");
    CloseLibrary(kind, LibraryFileOf(kind));
  }
  listed.clear();
}

void PromisedLibrary::Close() {
  isLoaded = false;
  for (const std::string& kind : listed) CloseLibrary(kind, LibraryFileOf(kind));
  listed.clear();
}

// --- Queries

std::string PromisedLibrary::Available(std::uint32_t mask) {
  std::string kinds;
  for (const std::string& kind : listed) {
    Log(kind, "GetFlags");
    if (mask & 1) kinds += kind + " ";  // every fake has this bit
  }
  return kinds;
}

std::string PromisedLibrary::Find(const char* name) {
  if (!IsInitialized()) return "";
  for (const std::string& kind : listed) {
    Log(kind, "GetName");
    Allocate();
    Log(kind, "GetName");
    if (kind == name) return kind;
  }
  return "";
}

std::int32_t PromisedLibrary::IsInteractiveRng(const char* name) const {
  const std::set<std::string> interactive = {"bio", "bioqt", "unixx11", "biokbd"};
  return interactive.count(name) ? 1 : 0;
}

std::int32_t PromisedLibrary::GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask) {
  if (!IsInitialized() || !info) return 0;
  std::memset(info, 0, sizeof *info);
  if (settings) {
    const char* const type = settings->GetType();
    const char* const id = settings->GetHardwareId();
    if (IsTooLong(type) || IsTooLong(id)) return 0;
    if (IsSet(type)) {
      std::strcpy(info->type, type);
      if (IsSet(id)) std::strcpy(info->hardwareId, id);
      return 1;
    }
  }
  const std::vector<std::pair<std::uint32_t, const char*>> order = {
      {1, "bio"}, {2, "bioqt"}, {8, "unixx11"}, {4, "biokbd"}};
  for (const auto& [bit, kind] : order) {
    if (!(mask & bit)) continue;
    if (bit != 4 && Find(kind).empty()) continue;
    std::strcpy(info->type, kind);
    return 1;
  }
  return 0;
}

bool PromisedLibrary::SetDefaultRng(const char* type, const char* hardwareId) {
  if (!type || !settings || IsTooLong(type) || IsTooLong(hardwareId)) return false;
  return settings->SetType(type) && settings->SetHardwareId(hardwareId);
}
