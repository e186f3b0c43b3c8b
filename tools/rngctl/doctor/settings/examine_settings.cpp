#include "providers/library_handle.h"
#include "settings/known_path.h"
#include "tools/rngctl/channel/last_words.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/files/path_facts.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/settings/storing.h"

#include <cerrno>
#include <cxxabi.h>
#include <dlfcn.h>
#include <fstream>

#include <rngaggregator/aggregator.h>

namespace {

constexpr std::size_t kMostExamined = 1U << 20;  // real settings files are far shorter

// The file of the service that the lookup has just used, which remains loaded afterwards.
std::string FindService(const std::optional<std::string>& directory) {
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NOLOAD));
  if (const link_map* const map = MapOf(library.get())) return map->l_name;
  return directory == RNG_SETTINGS_DIR ? "" : "a library that was already in the process";
}

// "" for what may be intended: a link to a device such as /dev/null, or to a file that does not exist yet.
std::string FixReading(const std::string& file, const ReadingFault& fault) {
  const PathFacts facts = LookThrough(file);
  const bool isMissing = facts.error != 0 && facts.error != EACCES;
  const bool isOther = facts.Exists() && !facts.IsDirectory() && MayAccess(file, R_OK);
  return isMissing || isOther ? "" : fault.fix;
}

std::string BeginningOf(const std::string& file) {
  std::string text(kMostExamined, '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

// A missing device matters only to a kind.
IgnoredDefault FindIgnored(const SettingsAnswer& answer) {
  if (!LookThrough(answer.file).IsRegular()) return {};
  const std::string text = BeginningOf(answer.file);
  if (answer.type.empty()) {
    return FindIgnoredDefault(text, "RandomNumberGeneratorType", answer.file);
  }
  if (!answer.hardwareId.empty()) return {};
  return FindIgnoredDefault(text, "RandomNumberGeneratorHardwareID", answer.file);
}

std::string Text(const char* text) { return text ? text : ""; }

void Begin(SettingsStep step, SettingsAnswer& answer) {
  answer.step = step;
  Send(answer);
}

void ExamineFile(SettingsAnswer& answer) {
  answer.exists = MayExist(answer.file);
  answer.isFifo = LookThrough(answer.file).IsFifo();
  const ReadingFault fault = FindReadingFault(answer.file);
  answer.readingFault = fault.problem;
  answer.readingFix = FixReading(answer.file, fault);
  answer.writingFault = WhyNotStorable(answer.file);
  if (answer.isFifo) return;
  Begin(SettingsStep::kDefault, answer);
  answer.type = Text(GetDefaultSettings()->GetType());
  answer.hardwareId = Text(GetDefaultSettings()->GetHardwareId());
  answer.ignored = FindIgnored(answer);
}

void AskService(SettingsAnswer& answer) {
  const std::optional<std::string> directory = FindSettingsDirectory();
  answer.isKnown = directory.has_value();
  answer.service = FindService(directory);
  if (directory) {
    answer.file = *directory + "/rng.ini";
    ExamineFile(answer);
  }
  Begin(SettingsStep::kDataFile, answer);
  answer.dataFile = GetDefaultSettings()->GetDsdrFilePath();
}

}  // namespace

void ExamineSettings() {
  SettingsAnswer answer;
  Send(answer);
  try {
    AskService(answer);
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (...) {
    answer.exception = MessageOfException();
    return Send(answer);
  }
  Begin(SettingsStep::kEnd, answer);
}
