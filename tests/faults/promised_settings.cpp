#include "tests/faults/promised_library.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <strings.h>

namespace {

constexpr char kTypeKey[] = "RandomNumberGeneratorType";
constexpr char kIdKey[] = "RandomNumberGeneratorHardwareID";

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n\v\f");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r\n\v\f") - first + 1);
}

}  // namespace

std::vector<std::string> FoldersOf(const std::string& path) {
  std::vector<std::string> folders;
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    folders.push_back(path.substr(0, slash));
  }
  return folders;
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
