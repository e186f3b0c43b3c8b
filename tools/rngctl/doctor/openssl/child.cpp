#include "tools/rngctl/doctor/openssl/child.h"

#include "tools/rngctl/doctor/openssl/configuration/configuration.h"
#include "tools/rngctl/doctor/openssl/draw.h"
#include "tools/rngctl/doctor/openssl/user.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/settings_file.h"

#include <unistd.h>

namespace {

void Draw(const std::string& user) {
  OpensslDraw answer;
  answer.refusal = BecomeUser(user);
  if (answer.refusal.empty()) {
    answer.step = OpensslStep::kDraw;
    FindOpensslSettings(answer);
    Send(answer);
    DrawWithOpenssl(answer);
  }
  answer.step = OpensslStep::kEnd;
  Send(answer);
}

// The library treats a file that it cannot read like one that configures nothing.
void ReadSettings(OpensslConfiguration& answer) try {
  const std::string file = FindSettingsFile();
  if (file.empty() || !MayExist(file)) return;
  const ReadingFault fault = FindReadingFault(file);
  if (fault.problem.empty()) return;
  answer.settingsProblem = "it is unknown which default is configured: " + file +
                           " cannot be read (" + fault.problem + ")";
  answer.settingsFix = fault.fix;
} catch (const Refusal&) {
  return;  // if the known-path service fails, the draw has already said so
}

void Read(const OpensslQuestion& question) {
  if (!BecomeUser(question.user).empty()) return;  // the draw has reported that
  OpensslConfiguration answer = ReadOpensslConfiguration(question.isInOrder);
  if (question.hasNoDefault) ReadSettings(answer);
  Send(answer);
}

}  // namespace

void RunOpensslChild(int channel) {
  const auto question = BecomeChild<OpensslQuestion>(channel);
  question.subject == OpensslSubject::kDraw ? Draw(question.user) : Read(question);
  ::_exit(0);  // what modules do at exit is not examined
}
