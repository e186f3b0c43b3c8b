#include "tools/rngctl/doctor/start/evidence.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/examine/child.h"
#include "tools/rngctl/doctor/start/started_library.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <tuple>

namespace {

using Limit = std::chrono::seconds;

ChildResult AskStart(const StartOrder& start, bool looksUpFirst) {
  const Limit forAll = start.limit * std::tuple_size_v<ProviderCatalogue>;
  const WaitNotice notice("Waiting for a start with all plug-ins, at most " +
                          std::to_string(forAll.count()) + " s");
  const DoctorQuestion question{DoctorSubject::kStart, start.kind,           "",
                                looksUpFirst,          start.asksForDefault, start.unopened};
  ChildOrder order{kDoctorChildCommand, Encode(question), start.limit, LimitOf::kSilence};
  order.limitOfAll = forAll;
  return RunChild(order);
}

bool EndedInFirstQuestions(const StartAnswer& answer, const std::string& kind) {
  const bool isFirstLookup = answer.step == StartStep::kLookUp && answer.lookups.empty();
  return answer.step == StartStep::kDefault || (isFirstLookup && answer.subject == kind);
}

}  // namespace

const StartAnswer* StartEvidence::Fullest() const {
  if (second) return &*second;
  return answer ? &*answer : nullptr;
}

bool StartEvidence::IsComplete() const {
  return answer && answer->step == StartStep::kEnd && !answer->called && result.HasExited(kDone);
}

bool StartEvidence::ShowsLookup(const std::string& kind) const {
  const StartAnswer* const fullest = Fullest();
  return !fullest || !fullest->seconds || FindLookup(kind, *fullest) ||
         (answer->step == StartStep::kLookUp && answer->subject == kind);
}

StartEvidence TryLookup(const StartOrder& order) {
  StartEvidence start{AskStart(order, true), std::nullopt, std::nullopt};
  start.answer = start.result.Last<StartAnswer>();
  return start;
}

StartEvidence TryStart(const StartOrder& order) {
  StartEvidence start = TryLookup(order);
  if (start.answer && EndedInFirstQuestions(*start.answer, order.kind)) {
    start.second = AskStart(order, false).Last<StartAnswer>();
  }
  return start;
}
