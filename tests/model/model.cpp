#include "tests/model/model.h"

#include "tests/support/kinds.h"

namespace {

constexpr char kUntouched = '\x5A';

std::string YesOrNo(bool answer) { return answer ? "yes" : "no"; }

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
  for (const std::string& kind : KindNames()) plugins[kind].name = kind;
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
  if (what == "get_type") return EncodeText(GetSetting("builtin", true));
  if (what == "get_id") return EncodeText(GetSetting("builtin", false));
  if (what == "set_type") return YesOrNo(SetSetting("builtin", true, DecodeText(step[1])));
  if (what == "set_id") return YesOrNo(SetSetting("builtin", false, DecodeText(step[1])));
  if (what == "dsdr_path") return DataFile();
  return CloseAll();  // reload
}

std::string Model::State() const {
  std::string state = "started " + YesOrNo(count > 0) + ", record " + ToHex(record);
  for (const auto& [name, host] : hosts) {
    state += ", " + name + " " + EncodeText(host.type) + " " + EncodeText(host.id);
  }
  for (const char* const name : {"here", "deep"}) {
    const auto folder = folders.find(name);
    const bool exists = folder != folders.end() && folder->second.exists;
    state += std::string(", ") + name + " ";
    state += exists ? EncodeText(folder->second.file) : "missing";
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
