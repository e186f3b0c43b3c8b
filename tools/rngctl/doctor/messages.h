#ifndef TOOLS_RNGCTL_DOCTOR_MESSAGES_H
#define TOOLS_RNGCTL_DOCTOR_MESSAGES_H

#include "tools/rngctl/channel/messages.h"
#include "tools/rngctl/doctor/settings/ignored_default.h"
#include "tools/rngctl/process/lifecycle_calls.h"

#include <optional>
#include <string>
#include <vector>

/// What the doctor asks its children, and what they answer. A child sends its answer again whenever it
/// learns more, because the next call may end it. `step` is what the child is doing; `isDone` and
/// `kEnd` say that it has finished.

enum class DoctorSubject { kSearchOrder, kSettings, kDisplay, kPlugin, kBinding, kStart };
constexpr DoctorSubject LastOf(DoctorSubject) { return DoctorSubject::kStart; }

struct DoctorQuestion {
  DoctorSubject subject;
  std::string kind = {};  ///< of a plug-in; for a start the one to look up first, if any
  std::string path = {};  ///< for a plug-in the file to open; for the search order LD_LIBRARY_PATH
  bool looksUpFirst = false;   ///< in a start: the kind, and the default, before anything else
  bool asksForDefault = true;  ///< in a start
  std::vector<std::string> unopened =
      {};  ///< in a start: the kinds whose plug-ins are not to be opened
};
RNGCTL_MESSAGE(DoctorQuestion, subject, kind, path, looksUpFirst, asksForDefault, unopened)

struct SearchAnswer {
  std::vector<std::string> systemDirectories;
};
RNGCTL_MESSAGE(SearchAnswer, systemDirectories)

enum class SettingsStep { kFile, kDefault, kDataFile, kEnd };
constexpr SettingsStep LastOf(SettingsStep) { return SettingsStep::kEnd; }

/// The other fields are those of `SettingsReport`.
struct SettingsAnswer {
  SettingsStep step = SettingsStep::kFile;
  bool isKnown = false;                       ///< the directory of the settings was found
  std::optional<std::string> exception = {};  ///< the service threw it; its message, if it has one
  std::string service = {};
  std::string file = {};
  bool exists = false;
  bool isFifo = false;  ///< nothing was read: that would hang
  std::string readingFault = {};
  std::string readingFix = {};
  std::string writingFault = {};
  std::string type = {};
  std::string hardwareId = {};
  IgnoredDefault ignored = {};
  std::string dataFile = {};
};
RNGCTL_MESSAGE(SettingsAnswer, step, isKnown, exception, service, file, exists, isFifo,
               readingFault, readingFix, writingFault, type, hardwareId, ignored, dataFile)

/// The fields are those of `DisplayReport`.
struct DisplayAnswer {
  bool isDone = false;
  bool isFound = false;
  std::string reason = {};
  std::string fix = {};
};
RNGCTL_MESSAGE(DisplayAnswer, isDone, isFound, reason, fix)

enum class PluginStep {
  kOpen,
  kFactory,
  kSettings,
  kAvailable,
  kName,
  kFlags,
  kRelease,
  kClose,
  kEnd
};
constexpr PluginStep LastOf(PluginStep) { return PluginStep::kEnd; }

/// What becomes of a row when its plug-in does nothing forbidden.
enum class PluginOutcome { kNotOpened, kNoFactory, kFactoryReturnedNull, kNotAvailable, kKept };
constexpr PluginOutcome LastOf(PluginOutcome) { return PluginOutcome::kKept; }

/// The results of the two calls with which the library reads a name.
struct ReportedName {
  int size = 0;
  int sizeAgain = 0;
  std::string text = {};
};
RNGCTL_MESSAGE(ReportedName, size, sizeAgain, text)

struct PluginAnswer {
  PluginStep step = PluginStep::kOpen;
  std::string file = {};                  ///< what the loader opened
  std::string openError = {};             ///< the loader's message when it could not be opened
  bool isKept = false;                    ///< the library would list it
  std::optional<ReportedName> name = {};  ///< empty when it was not asked
  bool isFlagless = false;                ///< it reports no capability bits
  std::optional<LifecycleFunction> called = {};  ///< called in this step; nothing follows
  std::optional<PluginStep> threwIn = {};        ///< the step that an exception ended
  std::string exception = {};                    ///< its message, if it has one
  std::optional<PluginOutcome> outcome = {};     ///< empty when something forbidden came first
  bool staysLoaded = false;                      ///< in the process after it was closed
  std::string dataFile = {};  ///< of the kind that reads one; asked when it offers no generator
  double seconds = 0;         ///< from opening it until now
  std::vector<std::string> changes = {};  ///< what it leaves different in the process, in sentences
  std::vector<std::string> dependencies = {};  ///< the files of libraries that came with it
};
RNGCTL_MESSAGE(PluginAnswer, step, file, openError, isKept, name, isFlagless, called, threwIn,
               exception, outcome, staysLoaded, dataFile, seconds, changes, dependencies)

/// What a plug-in lacks, found by binding all of its symbols at once.
struct BindingAnswer {
  std::string bindError = {};   ///< the loader's message
  std::string undeclared = {};  ///< a symbol that only rngctl happens to have
  bool isOfLibrary = false;     ///< it is the aggregator's
};
RNGCTL_MESSAGE(BindingAnswer, bindError, undeclared, isOfLibrary)

#endif
