#include "tools/rngctl/doctor/openssl/child.h"

#include "tools/rngctl/doctor/openssl/configuration/configuration.h"
#include "tools/rngctl/doctor/openssl/draw.h"
#include "tools/rngctl/doctor/openssl/user.h"
#include "tools/rngctl/process/child.h"

#include <unistd.h>

namespace {

void Draw(const std::string& user) {
  OpensslDraw answer;
  Send(answer);
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

void Read(const OpensslQuestion& question) {
  if (!BecomeUser(question.user).empty()) return;  // the draw has reported that
  Send(ReadOpensslConfiguration(question.isInOrder));
}

}  // namespace

void RunOpensslChild(int channel) {
  const auto question = BecomeChild<OpensslQuestion>(channel);
  question.subject == OpensslSubject::kDraw ? Draw(question.user) : Read(question);
  ::_exit(0);  // what modules do at exit is not examined
}
