#include "tools/rngctl/doctor/report.h"
#include "tools/rngctl/terminal/colour.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include <rngaggregator/aggregator.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kFirstColumn = 17;

void PrintField(const std::string& name, const std::string& value) {
  std::cout << Padded(name, kFirstColumn) << Printable(value) << '\n';
}

void PrintSearchOrder(const SearchOrder& search) {
  std::string name = "Search order";
  const auto print = [&name](const std::string& place) {
    PrintField(name, place);
    name.clear();
  };
  for (const std::string& directory : search.directories) print(directory);
  print("the loader's cache");
  for (const std::string& directory : search.defaults) print(directory);
}

std::string DescribeFile(const SettingsReport& settings) {
  if (!settings.problem.empty()) {
    return (settings.file.empty() ? "unknown: " : settings.file + ": ") + settings.problem;
  }
  const std::string& cause = settings.writingFault;
  if (!settings.exists) {
    return settings.file + ", does not exist, " +
           (cause.empty() ? "can be created" : "cannot be created: " + cause);
  }
  const std::string& fault = settings.readingFault;
  return settings.file + ", " + (fault.empty() ? "readable" : "not readable (" + fault + ")") +
         (cause.empty() ? ", writable" : ", not writable: " + cause);
}

std::string DescribeDataFile(const SettingsReport& settings) {
  return settings.dataFile.empty() ? "unknown" : settings.dataFile;
}

// A default that is unusable is described by its fault.
std::string DescribeDefault(const DoctorReport& report) {
  const SettingsReport& settings = report.settings;
  const std::string device = settings.hardwareId.empty() ? "" : ", device " + settings.hardwareId;
  const std::string configured = (settings.type.empty() ? "none" : settings.type) + device;
  const std::string& problem = report.defaultFault.problem;
  if (!problem.empty()) return configured + ", unusable: " + problem;
  const std::string& ignored = settings.ignored.problem;
  if (!settings.type.empty()) {
    return configured + (report.start.findsDefault ? ", usable" : ", not examined") +
           (ignored.empty() ? "" : ", but the device is not read: " + ignored);
  }
  if (!ignored.empty()) return configured + ": " + ignored;
  if (!settings.problem.empty()) return "unknown";
  if (!settings.exists) return configured + " configured";
  return configured + (settings.readingFault.empty()
                           ? ": the file sets no RandomNumberGeneratorType in the section [Devices]"
                           : ": the settings file cannot be read");
}

void PrintTop(const DoctorReport& report) {
  const std::string& service = report.settings.service;
  PrintField("Library", report.search.library);
  PrintField("Run path", report.runPath.empty() ? "none" : report.runPath);
  PrintSearchOrder(report.search);
  PrintField("Settings file", DescribeFile(report.settings));
  PrintField("Data file", DescribeDataFile(report.settings));
  PrintField("Known paths",
             service.empty() ? "no service; the directories fixed at build time" : service);
  PrintField("X display", report.display.isFound ? "found" : "none: " + report.display.reason);
  PrintField("Default", DescribeDefault(report));
  PrintField("Start and stop", report.start.problem.empty() ? "OK" : report.start.problem);
  for (const StrayFile& stray : report.strays) {
    PrintField("Unknown file", stray.path + ": " + stray.problem);
  }
}

Colour ColourOf(const GeneratorReport& row) {
  switch (row.verdict) {
    case DoctorVerdict::kNotInstalled:
      return Colour::kNone;
    case DoctorVerdict::kNoDisplay:
      return Colour::kYellow;
    case DoctorVerdict::kLoaded:
      return row.warnings.empty() ? Colour::kGreen : Colour::kYellow;
    default:
      return Colour::kRed;
  }
}

void PrintRows(const std::vector<GeneratorReport>& rows) {
  std::size_t width = sizeof "FILE" - 1;
  for (const GeneratorReport& row : rows) {
    width = std::max(width, CountColumns(Printable(row.file)));
  }
  const auto print = [width](const std::string& kind, const std::string& file) {
    std::cout << Padded(kind, kFirstColumn) << Padded(Printable(file), width + 2);
  };
  std::cout << '\n';
  print("KIND", "FILE");
  std::cout << "VERDICT\n";
  for (const GeneratorReport& row : rows) {
    print(row.kind, row.file.empty() ? "-" : row.file);
    std::cout << Coloured(Printable(row.summary), ColourOf(row)) << '\n';
  }
}

struct Advice {
  std::string subjects;
  std::string sentence;
};

// Advice that several rows share is printed once.
void Add(std::vector<Advice>& advice, const std::string& subject, const std::string& sentence) {
  if (sentence.empty()) return;
  const auto same = std::find_if(advice.begin(), advice.end(), [&sentence](const Advice& other) {
    return other.sentence == sentence;
  });
  if (same == advice.end()) {
    advice.push_back({subject, sentence});
  } else {
    same->subjects += ", " + subject;
  }
}

void PrintAdvice(const DoctorReport& report) {
  std::vector<Advice> advice;
  if (report.display.endsProcesses) Add(advice, "X display", report.display.fix);
  Add(advice, "Library, warning", report.libraryWarning);
  Add(advice, "Settings file", report.settings.fix);
  Add(advice, "Default", report.settings.ignored.fix);
  Add(advice, "Default", report.defaultFault.fix);
  for (const StrayFile& stray : report.strays) {
    Add(advice, fs::path(stray.path).filename(), stray.fix);
  }
  for (const PermissionReport& finding : report.permissions) {
    Add(advice, finding.path, finding.problem + ". " + finding.fix);
  }
  for (const std::string& warning : report.start.warnings) Add(advice, "start, warning", warning);
  for (const std::string& process : report.leftRunning) {
    Add(advice, "still running", process + ". End it if nothing else uses it.");
  }
  for (const GeneratorReport& row : report.generators) {
    Add(advice, row.kind, row.fix);
    for (const std::string& warning : row.warnings) Add(advice, row.kind + ", warning", warning);
  }
  if (!advice.empty()) std::cout << '\n';
  for (const Advice& piece : advice) {
    std::cout << Printable(piece.subjects) << ": " << Printable(piece.sentence) << '\n';
  }
}

// What the plug-ins say themselves. A problem that is also the advice is not repeated.
void PrintDevices(const std::vector<GeneratorReport>& rows) {
  for (const GeneratorReport& row : rows) {
    for (const Device& device : row.devices) {
      std::cout << row.kind << ", device " << Printable(device.identifier) << ": "
                << Printable(device.text) << '\n';
    }
    for (const std::string& problem : row.problems) {
      if (row.fix.find(problem) != std::string::npos) continue;
      std::cout << row.kind << ", problem: " << Printable(problem) << '\n';
    }
  }
}

}  // namespace

void PrintText(const DoctorReport& report) {
  PrintTop(report);
  PrintRows(report.generators);
  PrintAdvice(report);
  PrintDevices(report.generators);
}
