#include "tools/rngctl/terminal/colour.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/report/report.h"
#include "tools/rngctl/test/report/sentences.h"
#include "tools/rngctl/test/timed_draws.h"

#include <iostream>

namespace {

constexpr std::size_t kLabelWidth = 12;

void PrintLine(const std::string& label, const std::string& text) {
  std::cout << Padded(label, kLabelWidth) << Printable(text) << '\n';
}

std::string WithUnit(double seconds) {
  if (seconds < 1e-6) return Rounded(seconds * 1e9, 3) + " ns";
  if (seconds < 1e-3) return Rounded(seconds * 1e6, 3) + " us";
  if (seconds < 1) return Rounded(seconds * 1e3, 3) + " ms";
  return Rounded(seconds, 3) + " s";
}

// Three digits are enough.
std::string BytesPerSecond(std::uint64_t bytes) {
  const auto number = static_cast<double>(bytes);
  if (bytes >= 1'000'000) return Rounded(number / 1e6, 3) + " MB per second";
  if (bytes >= 1000) return Rounded(number / 1e3, 3) + " kB per second";
  return std::to_string(bytes) + " bytes per second";
}

void PrintSpeed(const Speed& speed) {
  PrintLine("speed", BytesPerSecond(speed.bytesPerSecond));
  if (speed.smallDraws == 0) return;
  PrintLine("", std::to_string(kSmallDraw) + " bytes take " + WithUnit(speed.median) +
                    " (median), " + WithUnit(speed.percentile99) + " (99th percentile of " +
                    Counted(speed.smallDraws, "draw") + ")");
}

void PrintSource(const TestReport& report) {
  const SourceFacts& facts = report.facts;
  PrintLine("generator", (facts.name.empty() ? "no name reported" : facts.name) +
                             (facts.description.empty() ? "" : ": " + facts.description));
  PrintLine("device", facts.device.empty() ? "none reported" : facts.device);
  const bool isAskedOnce = report.asksUser && report.bytes == kBytesFromUser;
  PrintLine("drawn", Grouped(report.bytes) + " bytes" +
                         (isAskedOnce ? ": no more, because the generator needs the user" : ""));
  if (!report.asksUser) PrintSpeed(report.speed);
}

void PrintTest(const ReportedTest& test) {
  struct Status {
    const char* word;
    Colour colour;
  };
  constexpr Status kStatuses[] = {
      {"passed", Colour::kGreen}, {"failed", Colour::kRed}, {"not made", Colour::kDim}};
  const Status& status = kStatuses[static_cast<std::size_t>(test.outcome)];
  std::cout << Coloured(Padded(status.word, kLabelWidth), status.colour) << Padded(test.name, 21)
            << test.found << '\n';
}

}  // namespace

void PrintText(const TestReport& report) {
  PrintSource(report);
  std::cout << '\n';
  for (const ReportedTest& test : report.tests) PrintTest(test);
  std::cout << '\n';
  PrintLine("verdict", report.reason);
  PrintLine("limits", kLimitOfStatistics);
}
