#include "tools/rngctl/check/check.h"

#include "providers/catalogue.h"
#include "tools/rngctl/check/examination.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/text.h"

#include <filesystem>

namespace {

CheckSubject FindSubject(const CheckRequest& request) {
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

}  // namespace

void RunCheck(const CheckRequest& request) {
  Examination examination(FindSubject(request), std::chrono::seconds(request.timeout));
  const CheckReport report = examination.Run();
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  const std::size_t errors = report.CountFailed(Severity::kError);
  if (errors > 0) {
    throw Refusal(kNegativeAnswer, "The plug-in breaks " + Counted(errors, "rule") + ".");
  }
}
