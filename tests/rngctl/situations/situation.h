#ifndef TESTS_RNGCTL_SITUATIONS_SITUATION_H
#define TESTS_RNGCTL_SITUATIONS_SITUATION_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// The state of a machine in which a host starts the library, and what the host sees there. The doctor
/// must say the same.
struct Situation {
  std::string name;
  std::function<void()> arrange;        ///< on top of an installation without plug-ins and settings
  std::string host;                     ///< see `Seen`; empty: anything
  std::string environment = {};         ///< of both: "DISPLAY=:7", or any words before a command
  std::vector<std::string> kinds = {};  ///< those that are asked for alone, too
  /// A path, relative to the tree, that somebody else may change: hosts do not notice, the doctor must.
  std::string exposed = {};
  std::string difference = {};  ///< why the doctor and this host differ
};

inline void PrintTo(const Situation& situation, std::ostream* out) { *out << situation.name; }

/// The tables, by what is unusual.
std::vector<Situation>
FakePluginSituations();  ///< each fake plug-in alone, if a host does not simply get it
/// The others, which a host gets as usual. Only `./dev situations` runs these.
std::vector<Situation> HarmlessFakePluginSituations();
std::vector<Situation> CompanySituations();      ///< plug-ins that conflict
std::vector<Situation> FileSituations();         ///< files and where they lie
std::vector<Situation> SettingsSituations();     ///< the settings file and the default
std::vector<Situation> SurroundingSituations();  ///< display, known paths, the process itself
std::vector<Situation> UserSituations();         ///< what this user may not read
std::vector<Situation> PermissionSituations();   ///< who may write what
std::vector<Situation> LimitSituations();        ///< limits, sandboxes and the loader's variables
std::vector<Situation> DisturbedSituations();    ///< plug-ins that disturb more than themselves
std::vector<Situation> OddSettingsSituations();  ///< settings files with odd bytes

#endif
