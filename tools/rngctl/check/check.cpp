#include "tools/rngctl/check/check.h"

#include "providers/catalogue.h"
#include "tools/rngctl/check/examination.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/likeness.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace {

// Each check opens the file again, in a process whose standard input is /dev/null.
void RefuseStandardInput(const std::string& file) {
  for (const char* const name : {"/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"}) {
    if (file != name) continue;
    throw Refusal(kWrongUsage, Quoted(file) + " is standard input. Name the file itself.");
  }
}

CheckSubject FindSubject(const CheckRequest& request) {
  RefuseStandardInput(request.file);
  CheckSubject subject;
  subject.facts = ReadElfFacts(request.file);
  const std::filesystem::path path = std::filesystem::absolute(request.file);
  subject.plugin = {path.string(), request.factory, ""};
  subject.fileName = path.filename().string();
  subject.isFactoryGiven = !request.factory.empty();
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (row.libraryFile != subject.fileName) continue;
    subject.plugin.kind = row.name;
    if (!subject.isFactoryGiven) subject.plugin.factory = row.factorySymbol;
    subject.isCataloguePair = subject.plugin.factory == row.factorySymbol;
  }
  return subject;
}

[[noreturn]] void RefuseCheck(const std::string& name) {
  std::vector<std::string> known;
  for (const Rule& rule : AllRules()) known.emplace_back(rule.name);
  const std::string meant = FindLikeness(name, known);
  throw Refusal(kWrongUsage, "There is no check " + Quoted(name) + "." +
                                 (meant.empty() ? " \"rngctl check PLUGIN\" shows all checks."
                                                : " Did you mean " + Quoted(meant) + "?"));
}

std::set<std::string> ChosenChecks(const std::vector<std::string>& names) {
  const std::vector<Rule> rules = AllRules();
  for (const std::string& name : names) {
    const bool isKnown = std::any_of(rules.begin(), rules.end(),
                                     [&name](const Rule& rule) { return rule.name == name; });
    if (!isKnown) RefuseCheck(name);
  }
  return {names.begin(), names.end()};
}

}  // namespace

void RunCheck(const CheckRequest& request) {
  const std::set<std::string> chosen = ChosenChecks(request.only);
  Examination examination(FindSubject(request), std::chrono::seconds(request.timeout));
  const CheckReport report = examination.Run(chosen);
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  const std::size_t errors = report.CountFailed(Severity::kError);
  if (errors > 0) {
    throw Refusal(kNegativeAnswer, "The plug-in breaks " + Counted(errors, "rule") + ".");
  }
}
