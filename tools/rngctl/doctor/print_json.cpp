#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/terminal/text.h"

#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

const std::map<DoctorVerdict, const char*> kIdentifiers = {
    {DoctorVerdict::kLoaded, "loaded"},
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
    {DoctorVerdict::kStopped, "stopped"},
    {DoctorVerdict::kEndedProcess, "ended-the-process"},
    {DoctorVerdict::kNoAnswer, "no-answer"},
    {DoctorVerdict::kInternalError, "internal-error"}};

// Null for an empty text.
Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json AsJson(const IgnoredDefault& ignored) {
  if (ignored.problem.empty()) return nullptr;
  return {{"problem", ignored.problem}, {"fix", ignored.fix}};
}

Json AsJson(const SettingsReport& settings) {
  return {{"file", OrNull(settings.file)},
          {"exists", settings.exists},
          {"reading_fault", OrNull(settings.readingFault)},
          {"writable", settings.IsWritable()},
          {"writing_fault", OrNull(settings.writingFault)},
          {"known_path_service", OrNull(settings.service)},
          {"data_file", OrNull(settings.dataFile)},
          {"problem", OrNull(settings.problem)},
          {"fix", OrNull(settings.fix)},
          {"ignored_default", AsJson(settings.ignored)}};
}

Json AsJson(const DisplayReport& display) {
  return {{"found", display.isFound},
          {"ends_processes", display.endsProcesses},
          {"reason", OrNull(display.reason)},
          {"fix", OrNull(display.fix)}};
}

Json AsJson(const GeneratorReport& row) {
  Json devices = Json::array();
  for (const Device& device : row.devices) {
    devices.push_back({{"identifier", device.identifier}, {"text", device.text}});
  }
  return {{"kind", row.kind},         {"library_file", row.libraryFile},
          {"file", OrNull(row.file)}, {"verdict", kIdentifiers.at(row.verdict)},
          {"kept", row.isKept},       {"name", OrNull(row.name)},
          {"summary", row.summary},   {"fix", OrNull(row.fix)},
          {"warnings", row.warnings}, {"seconds", row.seconds},
          {"devices", devices},       {"problems", row.problems}};
}

Json AsJson(const StrayFile& stray) {
  return {{"file", stray.path}, {"problem", stray.problem}, {"fix", stray.fix}};
}

Json AsJson(const PermissionReport& finding) {
  return {{"path", finding.path}, {"problem", finding.problem}, {"fix", finding.fix}};
}

Json DefaultAsJson(const DoctorReport& report) {
  if (report.settings.type.empty()) return nullptr;
  return {{"kind", report.settings.type},
          {"hardware_id", OrNull(report.settings.hardwareId)},
          {"found", report.start.findsDefault ? Json(*report.start.findsDefault) : Json()},
          {"problem", OrNull(report.defaultFault.problem)},
          {"fix", OrNull(report.defaultFault.fix)}};
}

Json AsJson(const StartReport& start) {
  return {{"tried", start.isTried},
          {"problem", OrNull(start.problem)},
          {"culprit", OrNull(start.culprit)},
          {"seconds", start.seconds ? Json(*start.seconds) : Json()},
          {"warnings", start.warnings}};
}

}  // namespace

void PrintJson(const DoctorReport& report) {
  Json strays = Json::array();
  for (const StrayFile& stray : report.strays) strays.push_back(AsJson(stray));
  Json permissions = Json::array();
  for (const PermissionReport& finding : report.permissions) permissions.push_back(AsJson(finding));
  Json rows = Json::array();
  for (const GeneratorReport& row : report.generators) rows.push_back(AsJson(row));
  const Json json = {{"library",
                      {{"file", report.search.library},
                       {"run_path", OrNull(report.runPath)},
                       {"directories", report.search.directories},
                       {"default_directories", report.search.defaults},
                       {"warning", OrNull(report.libraryWarning)}}},
                     {"settings", AsJson(report.settings)},
                     {"display", AsJson(report.display)},
                     {"default", DefaultAsJson(report)},
                     {"start", AsJson(report.start)},
                     {"strays", strays},
                     {"permissions", permissions},
                     {"left_running", report.leftRunning},
                     {"generators", rows}};
  std::cout << EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) << '\n';
}
