#include "tests/model/real.h"

#include "tests/support/fakes.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <iterator>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr char kUntouched = '\x5A';
constexpr std::size_t kRoomBehind = 64;  // behind the entries that a list may fill

// Links, because copies would take most of the time of a sequence.
void Put(const std::string& folder, const std::string& variant, const std::string& file) {
  const fs::path target = TreePath("lib/" + file);
  fs::remove(target);
  if (variant == "missing") return;
  if (variant == "garbage" || variant == "absent") return WriteFile(target, "not a library\n");
  fs::create_symlink(fs::path(FAKES_DIR) / folder / variant / file, target);
}

std::string FolderPath(const std::string& name) {
  return TreePath(name == "deep" ? "deep/er/etc" : name == "blocked" ? "blocked/etc" : "etc");
}

void SetService(const std::string& name) {
  auto& directories = KnownPath().directories;
  directories.erase(2);
  if (name != "none") directories[2] = FolderPath(name);
}

void SetData(bool exists) {
  auto& directories = KnownPath().directories;
  directories.erase(0);
  if (exists) directories[0] = TreePath("share");
}

std::string FolderState(const std::string& name) {
  const std::string folder = FolderPath(name);
  if (!fs::exists(folder)) return "missing";
  const std::string file = folder + "/rng.ini";
  const std::string left = fs::exists(file + ".tmp") ? " and a temporary file" : "";
  return (fs::exists(file) ? EncodeText(ReadFile(file).c_str()) : "null") + left;
}

const char* TextOrNull(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

std::string YesOrNo(bool answer) { return answer ? "yes" : "no"; }

void PutInPlace(std::string& text, const std::string& what, const std::string& replacement) {
  if (text.starts_with(what)) text.replace(0, what.size(), replacement);
}

}  // namespace

// --- A host's settings

const char* HostSettings::GetType() {
  RecordCall(name, "GetType");
  return TextOrNull(type);
}

const char* HostSettings::GetHardwareId() {
  RecordCall(name, "GetHardwareId");
  return TextOrNull(id);
}

bool HostSettings::SetType(const char* text) {
  Note("SetType", text);
  if (!refusesType) type = text;
  return !refusesType;
}

bool HostSettings::SetHardwareId(const char* text) {
  Note("SetHardwareId", text);
  if (!refusesId) id = text ? std::optional<std::string>(text) : std::nullopt;
  return !refusesId;
}

const char* HostSettings::GetDsdrFilePath() {
  RecordCall(name, "GetDsdrFilePath");
  return "/nowhere";
}

void HostSettings::Note(const char* what, const char* text) {
  RecordCall(name, what);
  RecordCall(name, EncodeText(text));
}

// --- What the fakes do

Real::Real() {
  for (const std::string& kind : KindNames()) {
    Put("fake_plugins", "missing", LibraryFileOf(kind));
    Fake(kind) = FakeRng{};
    Fake(kind).name = kind;
    SetHooks(kind);
  }
  HookHost("A");
  HookHost("B");
  Put("fake_libs/x11", "refusing", "libX11.so.6");
  for (const char* const folder : {"etc", "deep", "share"}) fs::remove_all(TreePath(folder));
  WriteFile(TreePath("blocked"), "no directory\n");
  SetService("here");
  SetData(true);
  ClearCallLog();
}

Real::~Real() {
  library.reset();
  for (const std::string& kind : KindNames()) Fake(kind).hooks.clear();
  for (const char* const host : {"A", "B"}) Fake(host).hooks.clear();
}

void Real::SetHooks(const std::string& kind) {
  auto& hooks = Fake(kind).hooks;
  for (const char* const operation : {"factory", "IsAvailable", "Release", "GetFlags"}) {
    hooks[operation] = [this, call = kind + "." + operation] { MayThrow(call); };
  }
  hooks["SetSettings"] = [this, kind] {
    RecordCall(kind, "with:" + NameOf(Fake(kind).settings));
    MayThrow(kind + ".SetSettings");
  };
  hooks["GetName"] = [this, kind] {
    MayThrow(kind + ".GetName");
    if (IsSecondNameCall(kind)) MayThrow(kind + ".GetName2");
  };
  hooks["closed"] = [this, kind] {
    providers.erase(kind);
    Fake(kind).provider = nullptr;
  };
}

void Real::HookHost(const std::string& host) {
  for (const char* const operation : {"GetType", "SetType", "GetHardwareId", "SetHardwareId"}) {
    Fake(host).hooks[operation] = [this, call = host + "." + operation] { MayThrow(call); };
  }
}

void Real::MayThrow(const std::string& call) const {
  if (throwing.contains(call)) throw std::runtime_error(call);
}

// Calls come in pairs, unless the first answers that there is no name.
bool Real::IsSecondNameCall(const std::string& kind) {
  return Fake(kind).nameSize != 0 && ++nameCalls[kind] % 2 == 0;
}

bool Real::Arrange(const Step& step) {
  if (IsCall(step)) return false;
  const std::string& what = step[0];
  const std::string& which = step[1];
  const bool isOn = step.back() == "1";
  if (what == "plug") Put("fake_plugins", step[2], LibraryFileOf(which));
  if (what == "null") Fake(which).factoryGivesNull = isOn;
  if (what == "available") Fake(which).isAvailable = isOn;
  if (what == "flags") Fake(which).flags = DecodeMask(step[2]);
  if (what == "name") {
    const auto size = [](const std::string& word) {
      return word == "same" ? std::optional<std::int32_t>() : std::stoi(word);
    };
    Fake(which).name = DecodeText(step[2]).value_or("");
    Fake(which).nameSize = size(step[3]);
    Fake(which).nameAgain = size(step[4]);
  }
  if (what == "throw" && isOn) throwing.insert(which + "." + step[2]);
  if (what == "throw" && !isOn) throwing.erase(which + "." + step[2]);
  if (what == "host") {
    (step[2] == "type" ? HostNamed(which).type : HostNamed(which).id) = DecodeText(step[3]);
  }
  if (what == "refuse") {
    (step[2] == "type" ? HostNamed(which).refusesType : HostNamed(which).refusesId) = isOn;
  }
  if (what == "x11") Put("fake_libs/x11", which, "libX11.so.6");
  if (what == "service") SetService(which);
  if (what == "data") SetData(which == "here");
  if (what == "file") {
    const auto content = DecodeText(which);
    if (content) WriteFile(FolderPath("here") + "/rng.ini", *content);
    if (!content) fs::remove(FolderPath("here") + "/rng.ini");
  }
  if (what == "variable") SetVariable(which, DecodeText(step[2]).value_or(""));
  return true;
}

void Real::SetVariable(const std::string& name, const std::string& text) {
  texts.push_back(text);
  library->NameVariable(name) = texts.back().c_str();
}

// --- Calls

template <typename Function>
Outcome Real::Observe(Function function) {
  ClearCallLog();
  nameCalls.clear();
  record = std::string(sizeof(DefaultRngInfo), kUntouched);
  std::string result;
  try {
    result = function();
  } catch (const std::bad_alloc&) {
    result = "threw bad_alloc";
  } catch (const std::exception& thrown) {
    result = std::string("threw ") + thrown.what();
  }
  for (const std::string& kind : KindNames()) {
    if (Fake(kind).provider) providers[kind] = Fake(kind).provider;
  }
  const std::string trace = CallLog();
  return {result, trace, State()};
}

Outcome Real::Load() {
  return Observe([this] {
    Open();
    return "";
  });
}

Outcome Real::Do(const Step& step) {
  return Observe([&] { return Arrange(step) ? "" : Perform(step); });
}

Outcome Real::Unload() {
  return Observe([this] { return Close(); });
}

std::string Real::Perform(const Step& step) {
  const std::string& what = step[0];
  const auto text = [&step](std::size_t i) { return DecodeText(step[i]); };
  if (what == "initialize") return library->Initialize(SettingsNamed(step[1])), "";
  if (what == "shutdown") return library->ShutDown(), "";
  if (what == "initialized") return YesOrNo(library->IsInitialized());
  if (what == "count")
    return std::to_string(library->GetAvailableRng(nullptr, DecodeMask(step[1])));
  if (what == "list") return List(DecodeMask(step[1]));
  if (what == "rng") return NameOf(library->GetRng(text(1)->c_str()));
  if (what == "interactive") return std::to_string(library->IsInteractiveRng(text(1)->c_str()));
  if (what == "default") {
    // Seen in the state, also after an exception.
    auto* const info = reinterpret_cast<DefaultRngInfo*>(record.data());
    return std::to_string(library->GetDefaultRng(info, DecodeMask(step[1])));
  }
  if (what == "default_null") {
    return std::to_string(library->GetDefaultRng(nullptr, DecodeMask(step[1])));
  }
  if (what == "set") {
    const auto type = text(1);
    const auto id = text(2);
    return YesOrNo(library->SetDefaultRng(TextOrNull(type), TextOrNull(id)));
  }
  if (what == "builtin") {
    return builtin && library->GetDefaultSettings() == builtin ? "the same" : "another";
  }
  if (what == "get_type") return EncodeText(builtin->GetType());
  if (what == "get_id") return EncodeText(builtin->GetHardwareId());
  if (what == "set_type") return YesOrNo(builtin->SetType(TextOrNull(text(1))));
  if (what == "set_id") return YesOrNo(builtin->SetHardwareId(TextOrNull(text(1))));
  if (what == "dsdr_path") {
    std::string path = builtin->GetDsdrFilePath();
    PutInPlace(path, TreePath(""), std::string(kTree) + "/");
    return path;
  }
  const std::string result = Close();  // reload
  Open();
  return result;
}

void Real::Open() {
  library = std::make_unique<AggregatorLibrary>();
  builtin = library->GetDefaultSettings();
}

// What is called meanwhile is part of the result, sorted: the order is the loader's.
std::string Real::Close() {
  library.reset();
  const std::string path = TreePath("lib/librngaggregator.so");
  const bool isMapped = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD) != nullptr;
  std::string result = isMapped ? "still mapped" : "unmapped";
  std::istringstream log(CallLog());
  const std::multiset<std::string> calls{std::istream_iterator<std::string>(log), {}};
  for (const std::string& call : calls) result += " " + call;
  ClearCallLog();
  return result;
}

std::string Real::List(std::uint32_t mask) const {
  const std::size_t count = static_cast<std::size_t>(library->GetAvailableRng(nullptr, mask));
  ClearCallLog();  // the filling asks the same again
  char nothing = 0;
  const auto untouched = reinterpret_cast<IRngProvider*>(&nothing);
  std::vector<IRngProvider*> found(count + kRoomBehind, untouched);
  const auto filled = static_cast<std::size_t>(library->GetAvailableRng(found.data(), mask));
  std::string result = std::to_string(filled);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] != untouched || i < filled) result += " " + NameOf(found[i]);
  }
  return result;
}

std::string Real::State() const {
  const bool isStarted = library && library->IsInitialized();
  std::string state = "started " + YesOrNo(isStarted) + ", record " + ToHex(record);
  for (const auto& [name, host] : {std::pair{"A", &a}, std::pair{"B", &b}}) {
    state += std::string(", ") + name + " " + EncodeText(TextOrNull(host->type)) + " " +
             EncodeText(TextOrNull(host->id));
  }
  for (const char* const name : {"here", "deep"}) {
    state += std::string(", ") + name + " " + FolderState(name);
  }
  return state;
}

std::string Real::NameOf(const IRngSettings* settings) const {
  if (!settings) return "null";
  return settings == &a ? "A" : settings == &b ? "B" : settings == builtin ? "builtin" : "unknown";
}

std::string Real::NameOf(const IRngProvider* provider) const {
  if (!provider) return "null";
  const auto known = std::find_if(providers.begin(), providers.end(),
                                  [provider](const auto& pair) { return pair.second == provider; });
  return known == providers.end() ? "unknown" : known->first;
}

IRngSettings* Real::SettingsNamed(const std::string& name) {
  if (name == "null") return nullptr;
  return name == "builtin" ? builtin : &HostNamed(name);
}

HostSettings& Real::HostNamed(const std::string& name) { return name == "A" ? a : b; }
