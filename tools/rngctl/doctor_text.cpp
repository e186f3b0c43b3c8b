#include "doctor_report.h"
#include "host.h"
#include "terminal.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr std::size_t kFirstColumn = 15;

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
  print("the cache of the loader");
  for (const std::string& directory : search.defaults) print(directory);
}

std::string DescribeFile(const SettingsReport& settings) {
  if (!settings.problem.empty()) {
    return (settings.file.empty() ? "unknown: " : settings.file + ": ") + settings.problem;
  }
  const std::string state = !settings.exists ? "does not exist"
                            : settings.readingFault.empty()
                                ? "can be read"
                                : "cannot be read (" + settings.readingFault + ")";
  return settings.file + ", " + state + ", " +
         (settings.isWritable ? "can be written" : "cannot be written");
}

std::string DescribeSearch(const StartReport& start) {
  if (!start.findsDefault) return "not examined";
  if (*start.findsDefault) return "found";
  return start.problem.empty() ? "not found" : "not found, since a start does not go well";
}

std::string DescribeDefault(const DoctorReport& report) {
  const SettingsReport& settings = report.settings;
  const std::string device = settings.hardwareId.empty() ? "" : ", device " + settings.hardwareId;
  const std::string configured = (settings.type.empty() ? "none" : settings.type) + device;
  if (std::max(settings.type.size(), settings.hardwareId.size()) >= kRngNameSize) {
    return configured + ", of no use: more than 17 characters";
  }
  if (!settings.type.empty()) return configured + ", " + DescribeSearch(report.start);
  if (!settings.problem.empty()) return "not known";
  if (!settings.exists) return configured + " configured";
  return configured + (settings.readingFault.empty()
                           ? ": the file gives no RandomNumberGeneratorType in a section [Devices]"
                           : ": the settings file cannot be read");
}

void PrintTop(const DoctorReport& report) {
  const std::string& service = report.settings.service;
  PrintField("Library", report.search.library);
  PrintField("Run path", report.runPath.empty() ? "none" : report.runPath);
  PrintSearchOrder(report.search);
  PrintField("Settings file", DescribeFile(report.settings));
  PrintField("Known paths", service.empty() ? "no service, as fixed at build time" : service);
  PrintField("X display", report.display.isFound ? "found" : "none, " + report.display.reason);
  PrintField("Default", DescribeDefault(report));
  PrintField("Start, stop", report.start.problem.empty() ? "in order" : report.start.problem);
  for (const std::string& stray : report.strays) {
    PrintField("Of no kind", stray + ", which is no plug-in's name");
  }
}

constexpr const char* kGreen = "\033[32m";
constexpr const char* kYellow = "\033[33m";
constexpr const char* kRed = "\033[31m";

const char* ColourOf(const GeneratorReport& row) {
  switch (row.verdict) {
    case DoctorVerdict::kNotInstalled:
      return "";
    case DoctorVerdict::kNoDisplay:
      return kYellow;
    case DoctorVerdict::kLoaded:
      return row.warnings.empty() ? kGreen : kYellow;
    default:
      return kRed;
  }
}

void PrintRows(const std::vector<GeneratorReport>& rows) {
  const bool isColoured = UsesColour();
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
    const std::string colour = isColoured ? ColourOf(row) : "";
    std::cout << colour << Printable(row.summary) << (colour.empty() ? "" : "\033[0m") << '\n';
  }
}

struct Advice {
  std::string subjects;
  std::string sentence;
};

// What is the same for several rows is said once.
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
  if (report.display.endsProcesses) Add(advice, "X display", report.display.mend);
  for (const GeneratorReport& row : report.generators) {
    Add(advice, row.kind, row.mend);
    for (const std::string& warning : row.warnings) Add(advice, row.kind + ", warning", warning);
  }
  if (!advice.empty()) std::cout << '\n';
  for (const Advice& piece : advice) {
    std::cout << piece.subjects << ": " << Printable(piece.sentence) << '\n';
  }
}

}  // namespace

void PrintText(const DoctorReport& report) {
  PrintTop(report);
  PrintRows(report.generators);
  PrintAdvice(report);
}
