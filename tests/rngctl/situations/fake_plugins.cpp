#include "tests/rngctl/situations/situation.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

// A host and the doctor see nothing of what these do.
constexpr char kInChild[] = "in_child/";

// The kinds for which each folder has a plug-in; the folder is named relative to all.
std::map<std::string, std::vector<std::string>> KindsByVariant() {
  std::map<std::string, std::string> kinds;  // by library file
  for (const Kind& kind : AllKinds()) kinds[kind.libraryFile] = kind.name;
  std::map<std::string, std::vector<std::string>> variants;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(FAKES_DIR)) {
    const auto kind = kinds.find(entry.path().filename());
    if (kind == kinds.end()) continue;
    const fs::path folder = fs::relative(entry.path().parent_path(), FAKES_DIR);
    variants[folder].push_back(kind->second);
  }
  return variants;
}

std::string NameOf(std::string variant, const std::string& display) {
  std::replace(variant.begin(), variant.end(), '/', '_');
  return variant + display;
}

// Three leave processes. One writes to descriptors of the doctor, which a host does not have. One runs on
// when it is unloaded, and crashes by chance. One lets the host open no file to write to. Four together take
// longer than this host is waited for. Other cases cover them.
const std::set<std::string> kNotHere = {"leaves_process",
                                        "reports_and_leaves_process",
                                        "breaking/LeaveChild",
                                        "breaking/garbles_messages",
                                        "breaking/thread_runs_on",
                                        "disturbing/LowerDescriptorLimit",
                                        "slow_starts"};

// Why the doctor and this host differ.
std::string DifferenceOf(const std::string& variant) {
  constexpr char kListsByFlags[] = "the doctor lists by capability, which this host does not";
  const std::map<std::string, std::string> differences = {
      {"breaking/calls_at_exit",
       "no host is safe from a plug-in that starts the library at the end"},
      {"breaking/name_changes", "whether a kind is found depends on how often it was looked for"},
      {"disturbing/CloseDescriptors",
       "it also closes the channel on which the doctor's child answers"},
      {"disturbing/Flags_Crash", kListsByFlags},
      {"disturbing/Flags_Exit", kListsByFlags},
      {"disturbing/Flags_Hang", kListsByFlags},
      {"disturbing/Flags_Throw", kListsByFlags},
      {"initializes_in_name", "the host gets the generator, but its stop then releases nothing"},
      {"nameless",
       "a lookup that throws ends this host; the doctor goes on and blames the plug-in"},
      {"shuts_down_in_name", "the lookup stops the library under this host; the doctor says so"}};
  const auto known = differences.find(variant);
  return known == differences.end() ? "" : known->second;
}

Situation WithAll(const std::string& variant, const std::vector<std::string>& kinds,
                  const std::string& x11) {
  const auto arrange = [variant, kinds, x11] {
    InstallX11(x11);
    for (const std::string& kind : kinds) InstallPlugin(kind, variant);
  };
  return {NameOf(variant, x11 == "whole" ? "_display" : ""),
          arrange,
          "",
          "",
          kinds.size() == 1 ? kinds : std::vector<std::string>{},
          "",
          DifferenceOf(variant)};
}

}  // namespace

std::vector<Situation> FakePluginSituations() {
  std::vector<Situation> situations;
  for (const auto& [variant, kinds] : KindsByVariant()) {
    if (kNotHere.contains(variant) || variant.starts_with(kInChild)) continue;
    situations.push_back(WithAll(variant, kinds, "refusing"));
    if (kinds.size() > 1) situations.push_back(WithAll(variant, kinds, "whole"));
  }
  return situations;
}
