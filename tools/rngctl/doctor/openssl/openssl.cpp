#include "tools/rngctl/doctor/openssl/openssl.h"

#include "tools/rngctl/doctor/openssl/child.h"
#include "tools/rngctl/doctor/openssl/messages.h"
#include "tools/rngctl/doctor/openssl/report.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/wait_notice.h"

#include <unistd.h>

namespace {

using Limit = std::chrono::seconds;

// How the provider's reason begins, whether the settings configure nothing or cannot be read.
constexpr char kNoDefault[] = "No default generator is configured";

ChildResult Ask(const OpensslQuestion& question, Limit limit) {
  const WaitNotice notice("Waiting for a draw by OpenSSL, at most " +
                          std::to_string(limit.count()) + " s");
  ChildOrder order = {kOpensslChildCommand, Encode(question), limit};
  order.endsDescendants = true;  // such as the provider's helper
  return RunChild(order);
}

// No other provider names a generator.
bool IsOurs(const OpensslDraw& draw) { return !draw.isReplaced && !draw.generator.empty(); }

OpensslResult Judge(const OpensslDraw& draw) {
  if (!draw.isDrawn) return OpensslResult::kFailed;
  return IsOurs(draw) ? OpensslResult::kDrawn : OpensslResult::kDrawnElsewhere;
}

std::string NameGenerator(const OpensslDraw& draw) {
  if (!draw.isDrawn) return "";
  if (draw.isReplaced) return "an engine";
  return IsOurs(draw) ? draw.generator : draw.algorithm + " of the provider " + draw.provider;
}

// Another user may have other generators.
std::string AdviseDoctor(const std::string& user) {
  if (user.empty() || ::geteuid() != 0) return "Run \"rngctl doctor\" to examine the generators.";
  return "Run \"runuser -u " + user +
         " -- rngctl doctor\" to examine the generators with that user's rights.";
}

// The provider's own reason is a sentence, which often contains the advice, too.
void PutReason(OpensslReport& report, const std::string& reason) {
  report.problem = reason;
  if (report.problem.ends_with('.')) report.problem.pop_back();
  if (reason.find("Fix:") != std::string::npos) return;
  const bool hasAdvice = reason.find("rngctl") != std::string::npos;
  if (!hasAdvice || !report.user.empty()) report.fix = AdviseDoctor(report.user);
}

void PutConfiguration(OpensslReport& report, const OpensslDraw& draw, Limit limit) {
  const bool isInOrder = IsOurs(draw) || !draw.reason.empty();
  const bool hasNoDefault = draw.reason.starts_with(kNoDefault);
  const ChildResult result =
      Ask({OpensslSubject::kConfiguration, report.user, isInOrder, hasNoDefault}, limit);
  const auto answer = result.Last<OpensslConfiguration>();
  if (!answer) {
    report.warnings.push_back("The process that reads the configuration " +
                              DescribeEnd(result, limit) + '.');
    return;
  }
  report.module = answer->module;
  report.warnings = answer->warnings;
  if (!answer->settingsProblem.empty()) {
    report.problem = answer->settingsProblem;
    report.fix = answer->settingsFix;
  }
  if (!report.problem.empty()) return;
  report.problem = answer->problem;
  report.fix = answer->fix;
}

// If the configuration does not explain the result.
void PutRest(OpensslReport& report, const OpensslDraw& draw) {
  if (report.result == OpensslResult::kDrawn || !report.problem.empty()) return;
  report.problem =
      draw.isDrawn ? "the configuration does not explain why" : "OpenSSL says: " + draw.error;
}

void PutBadEnd(OpensslReport& report, const ChildResult& result, Limit limit) {
  report.problem = "the process that draws " + DescribeEnd(result, limit);
  report.fix =
      result.end == ChildEnd::kTimedOut
          ? "If the generator is slow, allow more with --timeout. Otherwise run \"rngctl doctor\"."
          : "Examine the modules that the configuration names, and run \"rngctl doctor\".";
}

OpensslReport Examine(const std::string& user, Limit limit) {
  const ChildResult result = Ask({OpensslSubject::kDraw, user}, limit);
  const auto draw = result.Last<OpensslDraw>().value_or(OpensslDraw{});
  if (!draw.refusal.empty()) throw Refusal(kWrongUsage, draw.refusal);
  OpensslReport report = {user, draw.environment, draw.file};
  if (draw.step != OpensslStep::kEnd) {
    PutBadEnd(report, result, limit);
    return report;
  }
  report.result = Judge(draw);
  report.generator = NameGenerator(draw);
  if (draw.isReplaced) {
    report.problem = "an engine replaces OpenSSL's random-number generator";
    report.fix = "Remove the engine from the configuration.";
  }
  if (!draw.reason.empty()) PutReason(report, draw.reason);
  PutConfiguration(report, draw, limit);
  PutRest(report, draw);
  return report;
}

void Conclude(const OpensslReport& report) {
  if (report.result == OpensslResult::kDrawn) return;
  const std::string consequence =
      report.result == OpensslResult::kFailed
          ? "Programs that use OpenSSL get no random bytes: "
          : "Programs that use OpenSSL do not draw from rngaggregator: ";
  throw Refusal(kNegativeAnswer, consequence + report.problem + '.');
}

}  // namespace

void RunOpensslDoctor(const DoctorRequest& request) {
  const OpensslReport report = Examine(request.user, Limit(request.timeout));
  request.asJson ? PrintJson(report) : PrintText(report);
  FinishOutput();
  Conclude(report);
}
