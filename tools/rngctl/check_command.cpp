#include "commands.h"
#include "examination.h"
#include "host.h"
#include "providers/catalogue.h"

#include <filesystem>
#include <iostream>

namespace {

CheckSubject FindSubject(const CheckRequest& request) {
  CheckSubject subject;
  subject.facts = ReadElfFacts(request.plugin);
  const std::filesystem::path path = std::filesystem::absolute(request.plugin);
  subject.path = path.string();
  subject.file = path.filename().string();
  subject.factory = request.factory;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (row.libraryFile != subject.file) continue;
    subject.kind = row.name;
    if (subject.factory.empty()) subject.factory = row.factorySymbol;
    subject.isCataloguePair = subject.factory == row.factorySymbol;
  }
  return subject;
}

}  // namespace

void RunCheck(const CheckRequest& request) {
  Examination examination(FindSubject(request), !request.factory.empty(),
                          std::chrono::seconds(request.timeout));
  const CheckReport report = examination.Run();
  (request.asJson ? PrintAsJson : PrintAsText)(report);
  FinishOutput();
  const std::size_t errors = report.CountFailed(Severity::kError);
  if (errors == 0) return;
  throw Refusal(kNegativeAnswer, "The plug-in breaks " + std::to_string(errors) +
                                     (errors == 1 ? " rule." : " rules."));
}
