#include "providers/library_handle.h"
#include "settings/known_path.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/doctor/settings/path_facts.h"
#include "tools/rngctl/doctor/settings/storing.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/process/child.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

// The file of the service that the lookup has just used, which remains loaded afterwards.
std::string FindService(const std::optional<std::string>& directory) {
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NOLOAD));
  if (const link_map* const map = MapOf(library.get())) return map->l_name;
  return directory == RNG_SETTINGS_DIR ? "" : "a library that was already in the process";
}

std::string WhyNotReadable(const std::string& file) {
  if (!MayAccess(file, R_OK)) return std::strerror(errno);
  const PathFacts facts = LookThrough(file);
  return facts.IsRegular() ? "" : "it is " + KindOfFile(facts);
}

// True also when this user may not look whether it exists, and for a dangling link.
bool MayExist(const std::string& file) {
  const int error = LookAtEntry(file).error;
  return error != ENOENT && error != ENOTDIR;
}

std::string Text(const char* text) { return text ? text : ""; }

void Begin(SettingsStep step, SettingsAnswer& answer) {
  answer.step = step;
  Send(answer);
}

void ExamineFile(SettingsAnswer& answer) {
  answer.exists = MayExist(answer.file);
  answer.isFifo = LookThrough(answer.file).IsFifo();
  answer.readingFault = WhyNotReadable(answer.file);
  answer.writingFault = WhyNotStorable(answer.file);
  if (answer.isFifo) return;
  Begin(SettingsStep::kDefault, answer);
  answer.type = Text(GetDefaultSettings()->GetType());
  answer.hardwareId = Text(GetDefaultSettings()->GetHardwareId());
}

}  // namespace

void ExamineSettings() {
  SettingsAnswer answer;
  Send(answer);
  const std::optional<std::string> directory = FindSettingsDirectory();
  answer.isKnown = directory.has_value();
  answer.service = FindService(directory);
  if (directory) {
    answer.file = *directory + "/rng.ini";
    ExamineFile(answer);
  }
  Begin(SettingsStep::kDataFile, answer);
  answer.dataFile = GetDefaultSettings()->GetDsdrFilePath();
  Begin(SettingsStep::kEnd, answer);
}
