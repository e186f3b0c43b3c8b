#include "tests/model/model.h"

#include "tests/model/profile_text.h"

#include <cstdlib>

namespace {

constexpr std::size_t kFieldSize = 18;
constexpr std::size_t kRecordSize = 2 * kFieldSize;
constexpr char kUntouched = '\x5A';
constexpr char kTypeKey[] = "RandomNumberGeneratorType";
constexpr char kIdKey[] = "RandomNumberGeneratorHardwareID";

bool NeedsDisplay(const std::string& kind) { return kind == "bioqt" || kind == "unixx11"; }
bool IsTooLong(const std::optional<std::string>& text) { return text && text->size() > 17; }
std::string Padded(std::string text) {
  text.resize(kFieldSize);
  return text;
}
std::string YesOrNo(bool answer) { return answer ? "yes" : "no"; }
std::string Shown(const std::optional<std::string>& text) {
  return EncodeText(text ? text->c_str() : nullptr);
}

}  // namespace

const std::vector<std::string> kMistakes = {
    "count never falls below zero",
    "count of a failed start falls back",
    "settings of the second start taken",
    "display probed once",
    "release comes after the closing",
    "failed release empties the list",
    "provider released at the unloading",
    "later of two equal names wins",
    "fallback in the order of the bits",
    "missing plug-in not reopened",
    "identifier stored first",
    "stop forgets the settings",
    "file grows by a line",
    "record left as it was",
    "program ends at a debt",
};

std::string ToHex(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += {kDigits[byte / 16], kDigits[byte % 16]};
  }
  return hex;
}

Model::Model(std::string wrong) : mistake(std::move(wrong)) {
  for (const std::string& kind : kKinds) plugins[kind].name = kind;
  hosts["A"];
  hosts["B"];
  Forget();
}

// --- Steps

template <typename Function>
Outcome Model::Observe(Function function) {
  trace.clear();
  record = std::string(kRecordSize, kUntouched);
  std::string result;
  try {
    result = function();
  } catch (const Thrown& thrown) {
    result = "threw " + thrown.what;
  }
  return {result, trace, State()};
}

Outcome Model::Load() {
  return Observe([] { return ""; });
}

Outcome Model::Do(const Step& step) {
  return Observe([&] { return Arrange(step) ? "" : Perform(step); });
}

Outcome Model::Unload() {
  return Observe([this] { return CloseAll(); });
}

bool Model::Arrange(const Step& step) {
  if (IsCall(step)) return false;
  const std::string& what = step[0];
  const std::string& which = step[1];
  if (what == "plug") plugins[which].file = step[2];
  if (what == "null") plugins[which].givesNull = step[2] == "1";
  if (what == "available") plugins[which].isAvailable = step[2] == "1";
  if (what == "flags") plugins[which].flags = DecodeMask(step[2]);
  if (what == "name") {
    plugins[which].name = DecodeText(step[2]).value_or("");
    plugins[which].size = step[3];
    plugins[which].again = step[4];
  }
  if (what == "throw" && step[3] == "1") throwing.insert(which + "." + step[2]);
  if (what == "throw" && step[3] == "0") throwing.erase(which + "." + step[2]);
  if (what == "host")
    (step[2] == "type" ? hosts[which].type : hosts[which].id) = DecodeText(step[3]);
  if (what == "refuse") {
    (step[2] == "type" ? hosts[which].refusesType : hosts[which].refusesId) = step[3] == "1";
  }
  if (what == "x11") x11 = which;
  if (what == "service") service = which;
  if (what == "data") hasData = which == "here";
  if (what == "file") {
    Folder& here = folders["here"];
    here.file = DecodeText(which);
    here.exists = here.exists || here.file;
  }
  if (what == "variable") variables[which] = DecodeText(step[2]).value_or("");
  return true;
}

std::string Model::Perform(const Step& step) {
  const std::string& what = step[0];
  if (what == "initialize") return Initialize(step[1]), "";
  if (what == "shutdown") return ShutDown(), "";
  if (what == "initialized") return YesOrNo(count > 0);
  if (what == "count") return List(DecodeMask(step[1]), false);
  if (what == "list") return List(DecodeMask(step[1]), true);
  if (what == "rng") return Find(*DecodeText(step[1]));
  if (what == "interactive") return IsInteractive(*DecodeText(step[1])) ? "1" : "0";
  if (what == "default") return Default(DecodeMask(step[1]));
  if (what == "default_null") return "0";
  if (what == "set") return YesOrNo(SetDefault(DecodeText(step[1]), DecodeText(step[2])));
  if (what == "builtin") return "the same";
  if (what == "get_type") return Shown(GetSetting("builtin", true));
  if (what == "get_id") return Shown(GetSetting("builtin", false));
  if (what == "set_type") return YesOrNo(SetSetting("builtin", true, DecodeText(step[1])));
  if (what == "set_id") return YesOrNo(SetSetting("builtin", false, DecodeText(step[1])));
  if (what == "dsdr_path") return DataFile();
  return CloseAll();  // reload
}

std::string Model::State() const {
  std::string state = "started " + YesOrNo(count > 0) + ", record " + ToHex(record);
  for (const auto& [name, host] : hosts) {
    state += ", " + name + " " + Shown(host.type) + " " + Shown(host.id);
  }
  for (const char* const name : {"here", "deep"}) {
    const auto folder = folders.find(name);
    const bool exists = folder != folders.end() && folder->second.exists;
    state += std::string(", ") + name + " ";
    state += exists ? Shown(folder->second.file) : "missing";
  }
  return state;
}

void Model::Call(const std::string& who, const std::string& what) {
  trace += (trace.empty() ? "" : " ") + who + "." + what;
  MayThrow(who, what);
}

void Model::MayThrow(const std::string& who, const std::string& what) const {
  if (throwing.contains(who + "." + what)) throw Thrown{who + "." + what};
}

void Model::Forget() {
  count = 0;
  current = "null";
  list.clear();
  variables = {{"rngBioWin", "bio"},
               {"rngBioQt", "bioqt"},
               {"rngBioX11", "unixx11"},
               {"rngBioKb", "biokbd"}};
  dataFile.clear();
  isProbed = false;
}

// --- Start and stop

void Model::Initialize(const std::string& settings) {
  if (mistake == "settings of the second start taken") current = settings;
  if (++count != 1) return;
  current = settings;
  try {
    for (const std::string& kind : kKinds) LoadRow(kind, settings);
  } catch (const Thrown&) {
    if (mistake == "count of a failed start falls back") --count;
    throw;
  }
}

void Model::LoadRow(const std::string& kind, const std::string& settings) {
  if (!ProbeDisplay() && NeedsDisplay(kind)) return;
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
  Call(settings, Shown(value));
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
