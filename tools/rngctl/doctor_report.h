#ifndef TOOLS_RNGCTL_DOCTOR_REPORT_H
#define TOOLS_RNGCTL_DOCTOR_REPORT_H

#include "search_order.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

/// What the doctor has found out, for both printers. A text is "" where there is nothing to say; those
/// of plug-ins, services and the environment are as they came.

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
  kEndedProcess,
  kNoAnswer
};

NLOHMANN_JSON_SERIALIZE_ENUM(DoctorVerdict,
                             {{DoctorVerdict::kLoaded, "loaded"},
                              {DoctorVerdict::kNotInstalled, "not-installed"},
                              {DoctorVerdict::kCannotBeOpened, "cannot-be-opened"},
                              {DoctorVerdict::kNoFactory, "no-factory"},
                              {DoctorVerdict::kFactoryGaveNothing, "factory-gave-nothing"},
                              {DoctorVerdict::kNotAvailable, "not-available"},
                              {DoctorVerdict::kNameless, "nameless"},
                              {DoctorVerdict::kWrongName, "wrong-name"},
                              {DoctorVerdict::kNoDisplay, "no-display"},
                              {DoctorVerdict::kContradicted, "contradicted"},
                              {DoctorVerdict::kCallsBack, "calls-back"},
                              {DoctorVerdict::kThrew, "threw"},
                              {DoctorVerdict::kCrashed, "crashed"},
                              {DoctorVerdict::kEndedProcess, "ended-the-process"},
                              {DoctorVerdict::kNoAnswer, "no-answer"}})

struct GeneratorReport {
  std::string kind;
  std::string libraryFile;  ///< what the loader is asked for
  std::string file = {};    ///< what it takes, or would take
  DoctorVerdict verdict = DoctorVerdict::kNotInstalled;
  bool isKept = false;       ///< a start of the library lists it, whatever comes later
  bool stays = false;        ///< in the process after it was closed
  std::string name = {};     ///< what it reports
  std::string summary = {};  ///< the verdict in words
  std::string mend = {};     ///< how to come to a better one, in a sentence
  std::vector<std::string> warnings = {};
};

struct DisplayReport {
  bool isFound = false;
  bool endsProcesses = false;  ///< the probe has not come back: nor does a start of the library
  std::string reason = {};     ///< why there is none
  std::string mend = {};
};

struct SettingsReport {
  std::string file = {};          ///< the path of rng.ini
  bool exists = false;            ///< or may exist, where this user cannot look
  std::string readingFault = {};  ///< why it cannot be read
  bool isWritable = false;
  std::string service = {};  ///< the file of the known-path service that is in use
  std::string problem = {};  ///< why it is not known what is configured
  std::string type = {};     ///< the configured default
  std::string hardwareId = {};
};

/// A start of the library with all plug-ins, and its stop.
struct StartReport {
  bool isTried = false;
  std::string problem = "not tried";      ///< why it does not go well, or was not tried
  std::optional<bool> findsDefault = {};  ///< a generator has the configured name; empty: not known
};

struct DoctorReport {
  SearchOrder search;
  std::string runPath;
  SettingsReport settings;
  DisplayReport display;
  std::vector<GeneratorReport> generators;
  StartReport start;
  std::vector<std::string> strays;  ///< files that look like plug-ins, of no kind
};

void PrintText(const DoctorReport& report);
void PrintJson(const DoctorReport& report);

#endif
