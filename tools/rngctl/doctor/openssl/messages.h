#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_MESSAGES_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_MESSAGES_H

#include "tools/rngctl/channel/messages.h"

#include <string>
#include <vector>

/// One child draws as programs do, in a process that has not used OpenSSL before. A second one then reads the
/// configuration.
enum class OpensslSubject { kDraw, kConfiguration };
constexpr OpensslSubject LastOf(OpensslSubject) { return OpensslSubject::kConfiguration; }

struct OpensslQuestion {
  OpensslSubject subject;
  std::string user;           ///< whose programs draw; empty: this user's
  bool isInOrder = true;      ///< for the configuration: only warnings are wanted
  bool hasNoDefault = false;  ///< the draw has found no default generator
};
RNGCTL_MESSAGE(OpensslQuestion, subject, user, isInOrder, hasNoDefault)

enum class OpensslStep { kUser, kDraw, kEnd };
constexpr OpensslStep LastOf(OpensslStep) { return OpensslStep::kEnd; }

/// Texts are "" if there is nothing to say.
struct OpensslDraw {
  OpensslStep step = OpensslStep::kUser;
  std::string refusal = {};  ///< why the child cannot act for that user, in a sentence
  std::vector<std::string> environment =
      {};                 ///< the variables that OpenSSL reads: "OPENSSL_CONF=/a"
  std::string file = {};  ///< the configuration file in force
  bool isDrawn = false;
  bool isReplaced = false;     ///< by an engine, whatever the configuration says
  std::string algorithm = {};  ///< of OpenSSL's random-number generator
  std::string provider = {};   ///< of that algorithm
  std::string generator = {};  ///< which of ours made the draw: "Rutoken 3A7F"
  // Of a draw that failed:
  std::string reason = {};  ///< why our provider failed, in a sentence
  std::string error = {};   ///< the first error of OpenSSL
};
RNGCTL_MESSAGE(OpensslDraw, step, refusal, environment, file, isDrawn, isReplaced, algorithm,
               provider, generator, reason, error)

struct OpensslConfiguration {
  bool isRead = false;
  std::string module = {};   ///< the path of our provider's module
  std::string problem = {};  ///< why programs do not draw from our provider
  std::string fix = {};
  std::vector<std::string> warnings = {};
  std::string settingsProblem = {};  ///< why the default generator is unknown
  std::string settingsFix = {};
};
RNGCTL_MESSAGE(OpensslConfiguration, isRead, module, problem, fix, warnings, settingsProblem,
               settingsFix)

#endif
