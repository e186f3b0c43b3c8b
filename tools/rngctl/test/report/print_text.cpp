#include "tools/rngctl/terminal/colour.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/report/numbers.h"
#include "tools/rngctl/test/report/report.h"
#include "tools/rngctl/test/timed_draws.h"

#include <iostream>

namespace {

constexpr std::size_t kLabelWidth = 12;

void PrintLine(const std::string& label, const std::string& text) {
  std::cout << Padded(label, kLabelWidth) << Printable(text) << '\n';
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
