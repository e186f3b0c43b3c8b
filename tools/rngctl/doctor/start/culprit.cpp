#include "tools/rngctl/doctor/start/culprit.h"

#include "tools/rngctl/doctor/disturbance.h"
#include "tools/rngctl/doctor/start/started_library.h"

namespace {

// The kinds with a generator in the list that the library releases, in its order.
std::vector<std::string> ListKept(const StartAnswer& answer) {
  std::vector<std::string> kinds;
  for (const TakenFile& taken : answer.taken) {
    if (FindIn(taken.file, answer)) kinds.push_back(taken.kind);
  }
  return kinds;
}

// The library releases each generator and then closes its file: after a file is closed, either closing it
// failed or the next release.
std::vector<std::string> ListSuspectsOfStop(const StartAnswer& answer) {
  const std::vector<std::string> kept = ListKept(answer);
  if (kept.empty()) return {};
  if (answer.subject.empty()) return {kept[0]};
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (!IsSameFile(TakenFor(kept[i], answer), answer.subject)) continue;
    const std::size_t end = std::min(i + 2, kept.size());
    return {kept.begin() + static_cast<std::ptrdiff_t>(i),
            kept.begin() + static_cast<std::ptrdiff_t>(end)};
  }
  return {};
}

std::string FindFromAnswer(const StartAnswer& answer) {
  switch (answer.step) {
    case StartStep::kDisplay:
      return kDisplayCulprit;
    case StartStep::kTreat:
    case StartStep::kDevice:
      return answer.subject;
    case StartStep::kName:
      return KindOfFile(answer.subject, answer);
    case StartStep::kStop: {
      const std::vector<std::string> suspects = ListSuspectsOfStop(answer);
      return suspects.size() == 1 ? suspects[0] : "";
    }
    default:
      return "";
  }
}

// The only plug-in that the library keeps and that fails alone.
std::string FindFromRows(const std::vector<GeneratorReport>& rows) {
  std::string culprit;
  for (const GeneratorReport& row : rows) {
    if (!row.isKept || (!IsDisturbance(row) && !row.failsInFlags)) continue;
    if (!culprit.empty()) return "";
    culprit = row.kind;
  }
  return culprit;
}

}  // namespace

std::string FindCulprit(const StartEvidence& start, const std::vector<GeneratorReport>& rows) {
  if (const ForeignClose* const close = FindForeignClose(*start.Fullest())) {
    return KindOfFile(close->closer, *start.Fullest());
  }
  std::string culprit = FindFromAnswer(*start.answer);
  if (culprit.empty() && start.second) culprit = FindFromAnswer(*start.second);
  return culprit.empty() ? FindFromRows(rows) : culprit;
}
