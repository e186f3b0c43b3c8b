#include "tests/model/model.h"
#include "tests/model/profile_text.h"
#include "tests/support/kinds.h"

#include <cstdlib>

namespace {

constexpr char kTypeKey[] = "RandomNumberGeneratorType";
constexpr char kIdKey[] = "RandomNumberGeneratorHardwareID";

bool IsTooLong(const std::optional<std::string>& text) { return text && text->size() > 17; }
std::string Padded(std::string text) {
  text.resize(kFieldSize);
  return text;
}

}  // namespace

// --- Start and stop

void Model::Initialize(const std::string& settings) {
  if (mistake == "settings of the second start taken") current = settings;
  if (++count != 1) return;
  current = settings;
  try {
    for (const std::string& kind : KindNames()) LoadRow(kind, settings);
  } catch (const Thrown&) {
    if (mistake == "count of a failed start falls back") --count;
    throw;
  }
}

void Model::LoadRow(const std::string& kind, const std::string& settings) {
  if (!ProbeDisplay() && KindOfName(kind).needsDisplay) return;
  if (!Open(kind)) return;
  const Plugin& plugin = plugins[kind];
  if (plugin.openedFile == "no_factory") return Close(kind);
  try {
    Call(kind, "factory");
    if (plugin.givesNull) return Close(kind);
    trace += " " + kind + ".SetSettings " + kind + ".with:" + settings;
    MayThrow(kind, "SetSettings");
    Call(kind, "IsAvailable");
    if (!plugin.isAvailable) {
      Call(kind, "Release");
      return Close(kind);
    }
  } catch (const Thrown&) {
    Close(kind);
    throw;
  }
  list.push_back({kind});
}

bool Model::ProbeDisplay() {
  if (mistake == "display probed once" && isProbed) return hadDisplay;
  isProbed = true;
  hadDisplay = x11 == "whole";
  if (x11 == "absent") return false;
  Call("x11", "opened");
  if (x11 != "no_open") Call("x11", "XOpenDisplay");
  if (x11 == "whole") Call("x11", "XCloseDisplay");
  Call("x11", "closed");
  return hadDisplay;
}

// A library that is open already is what the loader finds, whatever its file is now.
bool Model::Open(const std::string& kind) {
  Plugin& plugin = plugins[kind];
  const bool exists = plugin.file == "scripted" || plugin.file == "no_factory";
  if (mistake == "missing plug-in not reopened" && !exists) return false;
  if (plugin.holders == 0 && !exists) return false;
  if (++plugin.holders > 1) return true;
  plugin.openedFile = plugin.file;
  Call(kind, "opened");
  return true;
}

void Model::Close(const std::string& kind) {
  if (--plugins[kind].holders == 0) Call(kind, "closed");
}

void Model::ShutDown() {
  if (count == 0 && mistake == "count never falls below zero") return;
  if (count == 0 && mistake == "program ends at a debt") std::abort();
  if (--count != 0) return;
  if (mistake == "stop forgets the settings") current = "null";
  try {
    for (Listed& listed : list) {
      if (listed.isEnded) continue;
      if (mistake == "release comes after the closing") Close(listed.kind);
      Call(listed.kind, "Release");
      if (mistake != "release comes after the closing") Close(listed.kind);
      listed.isEnded = true;
    }
  } catch (const Thrown&) {
    if (mistake == "failed release empties the list") list.clear();
    throw;
  }
  list.clear();
}

// The loader ends the plug-ins after the library that closes them, in an order of its own.
std::string Model::CloseAll() {
  std::multiset<std::string> calls;
  for (const Listed& listed : list) {
    if (listed.isEnded) continue;
    if (mistake == "provider released at the unloading") calls.insert(listed.kind + ".Release");
    if (--plugins[listed.kind].holders == 0) calls.insert(listed.kind + ".closed");
  }
  Forget();
  std::string result = "unmapped";
  for (const std::string& call : calls) result += " " + call;
  return result;
}

// --- Queries

std::string Model::List(std::uint32_t mask, bool isFilled) {
  std::size_t matches = 0;
  std::string kinds;
  for (const Listed& listed : list) {
    if (listed.isEnded) continue;
    Call(listed.kind, "GetFlags");
    if ((plugins[listed.kind].flags & mask) == 0) continue;
    ++matches;
    if (isFilled) kinds += " " + listed.kind;
  }
  return std::to_string(matches) + kinds;
}

std::string Model::ReportedName(const std::string& kind) {
  const Plugin& plugin = plugins[kind];
  const std::string size =
      plugin.size == "same" ? std::to_string(plugin.name.size() + 1) : plugin.size;
  Call(kind, "GetName");
  if (size == "0") return "";
  if (size == "-1") throw Thrown{"bad_alloc"};
  Call(kind, "GetName");
  MayThrow(kind, "GetName2");
  return plugin.again == "same" || plugin.again == size ? plugin.name : "";
}

// What is ended has no name, and no provider either.
std::string Model::Find(const std::string& name) {
  if (count <= 0) return "null";
  std::string found = "null";
  for (const Listed& listed : list) {
    if (listed.isEnded ? !name.empty() : ReportedName(listed.kind) != name) continue;
    found = listed.isEnded ? "null" : listed.kind;
    if (mistake != "later of two equal names wins") return found;
  }
  return found;
}

bool Model::IsInteractive(const std::string& name) const {
  for (const char* const variable : {"rngBioWin", "rngBioQt", "rngBioX11", "rngBioKb"}) {
    if (variables.at(variable) == name) return true;
  }
  return false;
}

std::string Model::Default(std::uint32_t mask) {
  if (count <= 0) return "0";
  if (mistake != "record left as it was") record = std::string(kRecordSize, '\0');
  if (current != "null") {
    const auto type = GetSetting(current, true);
    const auto id = GetSetting(current, false);
    if (IsTooLong(type) || IsTooLong(id)) return "0";
    if (type && !type->empty()) {
      record = Padded(*type) + Padded(id.value_or(""));
      return "1";
    }
  }
  const Value kind = Fallback(mask);
  if (!kind || IsTooLong(kind)) return "0";
  record = Padded(*kind) + Padded("");
  return "1";
}

Model::Value Model::Fallback(std::uint32_t mask) {
  if (mistake == "fallback in the order of the bits" && (mask & 4)) return "biokbd";
  if ((mask & 1) && Find(variables["rngBioWin"]) != "null") return variables["rngBioWin"];
  if ((mask & 2) && Find(variables["rngBioQt"]) != "null") return variables["rngBioQt"];
  if ((mask & 8) && Find(variables["rngBioX11"]) != "null") return variables["rngBioX11"];
  return (mask & 4) ? Value("biokbd") : std::nullopt;
}

bool Model::SetDefault(const Value& type, const Value& id) {
  if (!type || current == "null") return false;
  if (IsTooLong(type) || IsTooLong(id)) return false;
  if (mistake == "identifier stored first") {
    return SetSetting(current, false, id) && SetSetting(current, true, type);
  }
  return SetSetting(current, true, type) && SetSetting(current, false, id);
}

// --- Settings

Model::Value Model::GetSetting(const std::string& settings, bool isType) {
  if (settings == "builtin") return ReadFolder(isType ? kTypeKey : kIdKey);
  Call(settings, isType ? "GetType" : "GetHardwareId");
  return isType ? hosts[settings].type : hosts[settings].id;
}

bool Model::SetSetting(const std::string& settings, bool isType, const Value& value) {
  if (settings == "builtin") return WriteFolder(isType ? kTypeKey : kIdKey, value, isType);
  Call(settings, isType ? "SetType" : "SetHardwareId");
  Call(settings, EncodeText(value));
  Host& host = hosts[settings];
  if (isType ? host.refusesType : host.refusesId) return false;
  (isType ? host.type : host.id) = value;
  return true;
}

Model::Folder* Model::AskFolder() {
  Call("known_path", "2:256:0");
  return service == "here" || service == "deep" ? &folders[service] : nullptr;
}

Model::Value Model::ReadFolder(const std::string& key) {
  const Folder* const folder = AskFolder();
  if (!folder || !folder->file) return std::nullopt;
  const std::string value = ValueIn(*folder->file, key);
  return value.empty() ? Value() : value;
}

bool Model::WriteFolder(const std::string& key, const Value& value, bool makesFolders) {
  if (makesFolders) {
    Folder* const folder = AskFolder();
    if (!folder) return false;
    folder->exists = true;
  }
  Folder* const folder = AskFolder();
  if (!folder || !folder->exists) return false;
  folder->file = FileWith(folder->file, key, value.value_or(""));
  if (mistake == "file grows by a line") *folder->file += "\n";
  return true;
}

std::string Model::DataFile() {
  if (dataFile.empty()) {
    Call("known_path", "0:256:0");
    dataFile = (hasData ? std::string(kTree) + "/share" : "") + "/dsdr.bin";
  }
  return dataFile;
}
