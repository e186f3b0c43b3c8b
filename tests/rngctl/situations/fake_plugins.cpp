#include "tests/rngctl/situations/seen.h"
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
  for (fs::recursive_directory_iterator entry(FAKES_DIR), end; entry != end; ++entry) {
    if (entry->path().filename() == "CMakeFiles") entry.disable_recursion_pending();
    const auto kind = kinds.find(entry->path().filename());
    if (kind == kinds.end()) continue;
    variants[entry->path().parent_path().lexically_relative(FAKES_DIR)].push_back(kind->second);
  }
  return variants;
}

std::string NameOf(std::string variant, const std::string& display) {
  std::replace(variant.begin(), variant.end(), '/', '_');
  return variant + display;
}

// Three leave processes. Two write to descriptors of the doctor, which a host does not have. One runs on
// when it is unloaded, and crashes by chance. One lets the host open no file to write to. Four together take
// longer than this host is waited for. Other cases cover them.
const std::set<std::string> kNotHere = {"leaves_process",
                                        "reports_and_leaves_process",
                                        "breaking/LeaveChild",
                                        "breaking/garbles_messages",
                                        "garbles_without_dsdr",
                                        "breaking/thread_runs_on",
                                        "disturbing/LowerDescriptorLimit",
                                        "slow_starts"};

// What a host sees, and the fakes of which it sees that: those that it does not simply get as "dsdr", and those on
// which the doctor differs. "" stands for anything.
const std::map<Seen, std::set<std::string>> kSeen = {
    {"", {"disturbing_RaiseTerminalStop", "scripted", "scripted_display", "stub", "stub_display"}},
    {"accord", {"renames_beside_another", "renames_beside_another_display"}},
    {"biocore", {"sticky"}},
    {"crashed with signal 11",
     {"breaking_exit_handler_stays", "breaking_name_crashes", "disturbing_OverflowTheStack",
      "disturbing_UnloadItself", "shuts_down_in_name"}},
    {"crashed with signal 14", {"disturbing_RaiseAlarm", "disturbing_WaitForTimer"}},
    {"crashed with signal 6",
     {"breaking_available_crashes", "breaking_closing_crashes", "breaking_factory_does_not_resolve",
      "breaking_name_underruns", "breaking_opening_crashes", "crashing", "crowded",
      "crowded_display", "crowded_name", "crowded_name_display", "disturbing_Closing_Crash",
      "disturbing_Terminate", "disturbing_Unavailable_Release_Crash"}},
    {"crashed with signal 9", {"disturbing_KillItself"}},
    {"did not answer",
     {"breaking_calls_initialize", "breaking_calls_shut_down", "breaking_factory_hangs",
      "breaking_hangs_with_settings", "breaking_name_hangs", "disturbing_Name_Hang",
      "disturbing_Release_Hang", "hanging", "keeps_initializing"}},
    {"dsdr",
     {"breaking_calls_at_exit", "breaking_name_changes", "disturbing_CloseDescriptors",
      "disturbing_Flags_Crash", "disturbing_Flags_Exit", "disturbing_Flags_Hang",
      "disturbing_Flags_Throw", "initializes_in_name"}},
    {"dsdr biokbd",
     {"drawing_NeedsUser", "drawing_NeedsUser_display", "drawing_watches_memory",
      "drawing_watches_memory_display"}},
    {"exited with status 0",
     {"disturbing_BecomeADaemon", "disturbing_BecomeAnotherProgram", "disturbing_Closing_EndThread",
      "disturbing_Closing_Quit", "disturbing_EndThread", "disturbing_ExitWhenCrashing",
      "disturbing_Factory_EndThread", "disturbing_Name_EndThread", "disturbing_Opening_EndThread",
      "disturbing_Opening_Quit", "disturbing_Release_EndThread", "disturbing_Release_Quit",
      "disturbing_Settings_EndThread", "disturbing_Settings_Exit"}},
    {"exited with status 3", {"breaking_name_ends_process", "disturbing_ExitQuickly"}},
    {"exited with status 5", {"disturbing_ExitInAThread"}},
    {"exited with status 7", {"exiting"}},
    {"nothing",
     {"breaking_factory_gives_null",
      "breaking_factory_is_mangled",
      "breaking_factory_resolves_to_null",
      "breaking_name_is_empty",
      "breaking_name_is_long",
      "breaking_name_is_wrong",
      "breaking_name_size_differs",
      "breaking_refuses_opening",
      "breaking_unavailable",
      "disturbing_NameMegabyte",
      "disturbing_NameNotUtf8",
      "disturbing_NameWithBlank",
      "disturbing_NameWithEscapes",
      "flagless_bio",
      "is_another_kind",
      "missing_dependency",
      "name_is_longest",
      "names_another_kind",
      "no_factory",
      "null_factory",
      "reports_absent_device",
      "reports_problem",
      "reports_without_name",
      "slot_table",
      "sticky_unavailable",
      "unavailable",
      "unavailable_display",
      "unavailable_soname",
      "uses_terminal"}},
    {"sobol", {"closes_another", "flagless", "sociable", "sociable_display"}},
    {"threw an exception",
     {"breaking_factory_throws", "breaking_name_throws", "breaking_opening_throws",
      "breaking_release_throws", "disturbing_ThrowInAThread", "nameless", "nameless_display",
      "throwing_release", "throwing_start", "throws_in_release", "throws_lock_error",
      "throws_own_class"}},
    {"unixdev", {"unresolved_function"}},
    {"was stopped by signal 19", {"stops_itself"}},
};

// Null for a fake that is not listed.
const Seen* FindSeen(const std::string& name) {
  for (const auto& [seen, names] : kSeen) {
    if (names.contains(name)) return &seen;
  }
  return nullptr;
}

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
  const std::string name = NameOf(variant, x11 == "whole" ? "_display" : "");
  const Seen* const seen = FindSeen(name);
  return {name,
          arrange,
          seen ? *seen : "dsdr",
          "",
          kinds.size() == 1 ? kinds : std::vector<std::string>{},
          "",
          DifferenceOf(variant)};
}

std::vector<Situation> WithEachAlone() {
  std::vector<Situation> situations;
  static const auto kindsByVariant = KindsByVariant();  // each case begins with this search
  for (const auto& [variant, kinds] : kindsByVariant) {
    if (kNotHere.contains(variant) || variant.starts_with(kInChild)) continue;
    situations.push_back(WithAll(variant, kinds, "refusing"));
    if (kinds.size() > 1) situations.push_back(WithAll(variant, kinds, "whole"));
  }
  return situations;
}

std::vector<Situation> WithThoseThatAre(bool listed) {
  std::vector<Situation> situations = WithEachAlone();
  std::erase_if(situations, [listed](const Situation& situation) {
    return (FindSeen(situation.name) != nullptr) != listed;
  });
  return situations;
}

}  // namespace

std::vector<Situation> FakePluginSituations() { return WithThoseThatAre(true); }

std::vector<Situation> HarmlessFakePluginSituations() { return WithThoseThatAre(false); }
