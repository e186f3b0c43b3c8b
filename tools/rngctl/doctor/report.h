#ifndef TOOLS_RNGCTL_DOCTOR_REPORT_H
#define TOOLS_RNGCTL_DOCTOR_REPORT_H

#include "tools/rngctl/devices/device_report.h"
#include "tools/rngctl/doctor/settings/ignored_default.h"
#include "tools/rngctl/loader/search_order.h"

#include <optional>
#include <string>
#include <vector>

/// What the doctor found, for both printers. A text is "" if there is nothing to say. Texts from
/// plug-ins, services and the environment are unchanged.

enum class DoctorVerdict {
  kLoaded,
  kNotInstalled,
  kCannotBeOpened,
  kNoFactory,
  kFactoryGaveNothing,
  kNotAvailable,
  kNameless,
  kWrongName,
  kNoDisplay,
  kContradicted,
  kCallsBack,
  kThrew,
  kCrashed,
  kStopped,
  kEndedProcess,
  kNoAnswer,
  kInternalError  ///< of rngctl: the child's answer was not understood
};

struct GeneratorReport {
  std::string kind;
  std::string libraryFile;  ///< what the loader is asked for
  std::string file = {};    ///< what it opens, or would open
  DoctorVerdict verdict = DoctorVerdict::kInternalError;
  bool isKept = false;       ///< a start of the library lists it, whatever happens later
  bool staysLoaded = false;  ///< in the process after it was closed
  std::string name = {};     ///< what it reports
  std::string summary = {};  ///< the verdict in words
  std::string fix = {};      ///< what to do about it, in a sentence
  std::vector<std::string> warnings = {};
  bool isFlagless = false;    ///< it reports no capability bits
  bool failsInFlags = false;  ///< asking for the bits does not return; GetRng does not ask
  bool prints = false;        ///< on standard output
  std::vector<std::string> changes = {};   ///< what it leaves different in the process
  double seconds = 0;                      ///< that its examination took, from opening to closing
  std::vector<Device> devices = {};        ///< that the plug-in reports
  std::vector<std::string> problems = {};  ///< that the plug-in reports
  std::vector<std::string> dependencies = {};  ///< the files of libraries that came with it
};

inline void Put(GeneratorReport& report, DoctorVerdict verdict, const std::string& summary,
                const std::string& fix) {
  report.verdict = verdict;
  report.summary = summary;
  report.fix = fix;
}

struct DisplayReport {
  bool isFound = false;
  bool endsProcesses = false;  ///< the probe did not return, nor would a start of the library
  std::string reason = {};     ///< why there is none
  std::string fix = {};
};

struct SettingsReport {
  std::string file = {};          ///< the path of rng.ini
  bool exists = false;            ///< or may exist, but this user may not look
  std::string readingFault = {};  ///< why it cannot be read
  std::string writingFault = {};  ///< why no default can be stored
  std::string service = {};       ///< the file of the known-path service that is in use
  std::string problem = {};       ///< why it is unknown what is configured
  std::string fix = {};           ///< for that, or for what keeps programs from reading the file
  bool endsHosts = false;         ///< who asks for the default never gets an answer
  std::string type = {};          ///< the configured default
  std::string hardwareId = {};
  IgnoredDefault ignored = {};  ///< a line that was meant to configure the kind or the device
  std::string dataFile = {};    ///< what plug-ins get as its path

  bool IsWritable() const { return !file.empty() && writingFault.empty(); }
};

/// A start of the library with all plug-ins, and its stop.
struct StartReport {
  bool isTried = false;
  std::string problem = "not tried";      ///< why it fails, or was not tried
  bool preventsUse = false;               ///< it fails before programs can look up a generator
  std::string culprit = {};               ///< what makes it fail: a kind, or "display"
  std::optional<double> seconds = {};     ///< that it took, without the stop; empty: it failed
  std::optional<bool> findsDefault = {};  ///< a generator has the configured name; empty: unknown
  std::optional<bool> acceptsDevice =
      {};  ///< that generator, the configured device; empty: not asked
  std::vector<std::string> warnings = {};
};

/// A file that is named almost like a plug-in.
struct StrayFile {
  std::string path;
  std::string problem;
  std::string fix;
};

/// Why the configured default cannot be used, and what to do about it.
struct DefaultFault {
  std::string problem = {};
  std::string fix = {};
};

/// Somebody else can change what programs load or write, or it is not the plain file that one expects.
struct PermissionReport {
  std::string path;
  std::string problem;
  std::string fix;
  bool letsOthersChangeRoots = false;  ///< what root's processes load or write
};

struct DoctorReport {
  SearchOrder search;
  std::string runPath;
  std::string libraryWarning;  ///< other programs may load another library
  SettingsReport settings;
  DisplayReport display;
  std::vector<GeneratorReport> generators;
  StartReport start;
  DefaultFault defaultFault;
  std::vector<std::string> failures;  ///< of the doctor itself, in sentences
  std::vector<StrayFile> strays;
  std::vector<std::string> leftRunning;  ///< by the examinations: "sleep (process 4711)"
  std::vector<PermissionReport> permissions;
};

void PrintText(const DoctorReport& report);
void PrintJson(const DoctorReport& report);

#endif
