#include "tools/rngctl/doctor/examine/child.h"

#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/process/child.h"

#include <algorithm>

namespace {

ProviderCatalogueEntry FindRow(const std::string& kind) {
  const ProviderCatalogue catalogue = BuildProviderCatalogue();
  const auto hasKind = [&kind](const ProviderCatalogueEntry& row) { return row.name == kind; };
  return *std::find_if(catalogue.begin(), catalogue.end(), hasKind);  // every kind has one
}

}  // namespace

void RunDoctorChild(int channel) {
  const auto question = BecomeChild<DoctorQuestion>(channel);
  switch (question.subject) {
    case DoctorSubject::kSearchOrder:
      return ExamineSearch(question.path);
    case DoctorSubject::kSettings:
      return ExamineSettings();
    case DoctorSubject::kDisplay:
      return ExamineDisplay();
    case DoctorSubject::kPlugin:
      return ExaminePlugin(FindRow(question.kind), question.path);
    case DoctorSubject::kBinding:
      return ExamineBinding(question.path);
    case DoctorSubject::kStart:
      return ExamineStart(question);
  }
}
