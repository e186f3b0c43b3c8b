#include "tests/faults/promised_library.h"

#include "tests/support/tree.h"

#include <algorithm>
#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <cstring>
#include <new>
#include <strings.h>

namespace {

const std::string kX11File = "libX11.so.6";
constexpr char kTypeKey[] = "RandomNumberGeneratorType";
constexpr char kIdKey[] = "RandomNumberGeneratorHardwareID";

bool IsTooLong(const char* text) { return text && std::strlen(text) > 17; }
bool IsSet(const char* text) { return text && *text; }

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n\v\f");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r\n\v\f") - first + 1);
}

// The folders of `path`, outermost first, without the path itself.
std::vector<std::string> FoldersOf(const std::string& path) {
  std::vector<std::string> folders;
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    folders.push_back(path.substr(0, slash));
  }
  return folders;
}

}  // namespace

const std::vector<KnownKind>& KnownKinds() {
  static const std::vector<KnownKind> kinds = {{"bioqt", "librngbioqt.so", true},
                                               {"unixx11", "librngbiox11.so", true},
                                               {"dsdr", "librngdsdr.so", false},
                                               {"accord", "librngaccord.so", false},
                                               {"sobol", "librngsobol.so", false},
                                               {"JacartaGost", "librngjacartagost.so", false},
                                               {"Rutoken", "librngrutoken.so", false},
                                               {"EsmartGost", "librngesmartgost.so", false},
                                               {"biokbd", "librngbiokb.so", false},
                                               {"unixdev", "librngunixdev.so", false},
                                               {"grandmaster", "librnggrandmaster.so", false},
                                               {"biocore", "librngbiocore.so", false}};
  return kinds;
}

std::vector<std::string> AllKinds() {
  std::vector<std::string> kinds;
  for (const KnownKind& known : KnownKinds()) kinds.push_back(known.kind);
  return kinds;
}

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

const std::string& PromisedLibrary::FileOf(const std::string& kind) const {
  const auto& kinds = KnownKinds();
  return std::find_if(kinds.begin(), kinds.end(),
                      [&](const auto& known) { return known.kind == kind; })
      ->file;
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

void PromisedLibrary::Load(const KnownKind& row) {
  const auto& plugins = arrangement.plugins;
  if (row.file.size() > std::string().capacity()) Allocate();  // the row's own copy of the name
  const bool hasDisplay = Probe();
  if (row.needsDisplay && !hasDisplay) return;
  if (Strikes("dlopen")) return;
  if (std::find(plugins.begin(), plugins.end(), row.kind) == plugins.end()) return;
  OpenLibrary(row.kind, row.file);
  if (Strikes("dlsym")) return CloseLibrary(row.kind, row.file);
  Log(row.kind, "factory");
  if (arrangement.givesNull.count(row.kind)) return CloseLibrary(row.kind, row.file);
  Log(row.kind, "SetSettings");
  Log(row.kind, "IsAvailable");
  if (arrangement.unavailable.count(row.kind)) {
    Log(row.kind, "Release");
    return CloseLibrary(row.kind, row.file);
  }
  // When the list cannot grow, the library stays open.
  if (listed.size() == listed.capacity()) Allocate();
  listed.push_back(row.kind);
}

void PromisedLibrary::Initialize(IRngSettings* newSettings) {
  Lock();
  if (++count != 1) return;
  settings = newSettings;
  for (const KnownKind& row : KnownKinds()) Load(row);
}

void PromisedLibrary::ShutDown() {
  Lock();
  if (--count != 0) return;
  for (const std::string& kind : listed) {
    Log(kind, "Release");
    CloseLibrary(kind, FileOf(kind));
  }
  listed.clear();
}

void PromisedLibrary::Close() {
  isLoaded = false;
  for (const std::string& kind : listed) CloseLibrary(kind, FileOf(kind));
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

// --- A host's settings

const char* PromisedLibrary::Host::GetType() {
  library.Log("settings", "GetType");
  return type ? type->c_str() : nullptr;
}

bool PromisedLibrary::Host::SetType(const char* text) {
  library.Log("settings", "SetType");
  type = text;
  return true;
}

const char* PromisedLibrary::Host::GetHardwareId() {
  library.Log("settings", "GetHardwareId");
  return id ? id->c_str() : nullptr;
}

bool PromisedLibrary::Host::SetHardwareId(const char* text) {
  library.Log("settings", text ? "SetHardwareId" : "SetHardwareId(null)");
  id = text ? std::optional<std::string>(text) : std::nullopt;
  return true;
}

// --- The built-in settings

const char* PromisedLibrary::BuiltIn::GetType() {
  lastType = library.ReadValue(kTypeKey);
  return lastType.empty() ? nullptr : lastType.c_str();
}

bool PromisedLibrary::BuiltIn::SetType(const char* type) {
  return library.CreateDirectoriesOf(library.SettingsFile()) && library.WriteValue(kTypeKey, type);
}

const char* PromisedLibrary::BuiltIn::GetHardwareId() {
  lastHardwareId = library.ReadValue(kIdKey);
  return lastHardwareId.empty() ? nullptr : lastHardwareId.c_str();
}

bool PromisedLibrary::BuiltIn::SetHardwareId(const char* hardwareId) {
  return library.WriteValue(kIdKey, hardwareId ? hardwareId : "");
}

const char* PromisedLibrary::BuiltIn::GetDsdrFilePath() {
  if (dataFile.empty()) dataFile = library.LookUp(0).value_or("") + "/dsdr.bin";
  return dataFile.c_str();
}

// A service that cannot be opened leaves the fixed directories; one that refuses leaves nothing.
std::optional<std::string> PromisedLibrary::LookUp(int id) {
  if (Strikes("dlopen")) {
    return std::string(id == 2 ? RNG_SETTINGS_DIR : RNG_DATA_DIR);
  }
  bool isFound = !Strikes("dlsym");
  if (isFound) {
    Log("known_path", std::to_string(id) + ":256:0");
    isFound = !Strikes("known path");
  }
  Strikes("dlclose");  // the service stays in the process either way
  if (!isFound) return std::nullopt;
  Allocate();
  return TreePath(id == 2 ? "etc" : "share");
}

std::string PromisedLibrary::SettingsFile() {
  const auto directory = LookUp(2);
  return directory ? *directory + "/rng.ini" : "";
}

// Any failure to look counts as absence.
bool PromisedLibrary::Exists(const std::string& path) {
  return !Strikes("access") && (directories.count(path) || files.count(path));
}

bool PromisedLibrary::CreateDirectoriesOf(const std::string& path) {
  if (path.empty()) return false;
  if (Exists(path)) return true;
  for (const std::string& folder : FoldersOf(path)) {
    if (Exists(folder)) continue;
    // One that is there after all cannot be made either.
    if (Strikes("mkdir") || directories.count(folder)) return false;
    directories.insert(folder);
  }
  return true;
}

// A line that cannot be read is the end of the file.
std::string PromisedLibrary::ReadValue(const std::string& key) {
  const std::string path = SettingsFile();
  if (Strikes("fopen r") || !files.count(path)) return "";
  const std::string& content = files[path];
  std::string wanted = "[Devices]";
  std::string value;
  for (std::size_t position = 0; !Strikes("fgets") && position < content.size();) {
    const auto end = std::min(content.find('\n', position), content.size());
    const std::string line = content.substr(position, end - position);
    position = end + 1;
    if (::strncasecmp(line.c_str(), wanted.c_str(), wanted.size()) != 0) continue;
    if (wanted == key) {
      if (line.rfind('=') != std::string::npos) value = Trimmed(line.substr(line.rfind('=') + 1));
      break;
    }
    wanted = key;
  }
  Strikes("fclose r");  // not examined
  Allocate();           // to keep the value
  return value;
}

bool PromisedLibrary::OpenForWriting(const std::string& path) {
  if (Strikes("fopen w") || directories.count(path)) return false;
  if (!directories.count(path.substr(0, path.rfind('/')))) return false;
  files[path] = "";
  return true;
}

void PromisedLibrary::Put(std::string& to, const std::string& text) {
  if (!Strikes("write")) to += text;
}

// A character that cannot be read is the end of the file, and what was gathered is dropped.
std::optional<std::string> PromisedLibrary::TakeLine(const std::string& from,
                                                     std::size_t& position) {
  std::string line;
  while (!Strikes("getc") && position < from.size()) {
    const char c = from[position++];
    if (c == '\n') return line;
    if (c != '\r') line += c;
  }
  return std::nullopt;
}

std::string PromisedLibrary::Rewritten(const std::string& from, const std::string& key,
                                       const std::string& entry) {
  std::string to;
  std::size_t position = 0;
  enum { Before, Inside, After } phase = Before;
  while (const auto line = TakeLine(from, position)) {
    const bool isPlace = phase == Inside && (line->empty() || line->rfind(key, 0) == 0);
    if (isPlace) Put(to, entry);
    if (!isPlace || line->empty()) Put(to, *line + "\n");
    if (isPlace) phase = After;
    if (phase == Before && *line == "[Devices]") phase = Inside;
  }
  if (phase == Before) Put(to, "\n[Devices]\n");
  if (phase != After) Put(to, entry);
  return to;
}

// Once the temporary file is open, nothing that fails is noticed.
bool PromisedLibrary::WriteValue(const std::string& key, const std::string& value) {
  const std::string path = SettingsFile();
  const std::string temporary = path + ".tmp";
  const std::string entry = key + "=" + value + "\n";
  std::string text;
  if (Strikes("fopen r") || !files.count(path)) {
    if (path.empty() ? (Strikes("fopen w"), true) : !OpenForWriting(path)) return false;
    Put(text, "[Devices]\n");
    Put(text, entry);
    if (!Strikes("fclose w")) files[path] = text;
    return true;
  }
  const bool isOpen = OpenForWriting(temporary);
  if (isOpen) text = Rewritten(files[path], key, entry);
  Strikes("fclose r");
  if (!isOpen) return false;
  if (!Strikes("fclose w")) files[temporary] = text;
  if (!Strikes("unlink")) files.erase(path);
  if (!Strikes("rename")) {
    files[path] = files[temporary];
    files.erase(temporary);
  }
  return true;
}
