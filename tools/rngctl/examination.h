#ifndef TOOLS_RNGCTL_EXAMINATION_H
#define TOOLS_RNGCTL_EXAMINATION_H

#include "check_account.h"
#include "check_list.h"

#include <map>

/// One plug-in under all checks, those that run its code each in a child.
class Examination {
 public:
  Examination(CheckSubject plugin, bool isFactoryGiven, std::chrono::seconds timeout)
      : subject(std::move(plugin)), hasOwnFactory(isFactoryGiven), limit(timeout) {}

  CheckReport Run();

 private:
  CheckResult Examine(const CheckRule& rule);
  Finding ExamineInChild(const CheckRule& rule);
  void Remember(const CheckAccount& account);
  void RememberOutput(const std::string& printed, const std::string& check);
  std::string RequestFor(const CheckRule& rule) const;
  Finding Gather(const std::string& rule) const;
  std::string Unexamined() const;

  const CheckSubject subject;
  const bool hasOwnFactory;
  const std::chrono::seconds limit;
  bool drawsWait = false;
  std::set<std::string> stepsTaken;
  std::map<std::string, std::string> badSteps;  // what happened there
  std::map<std::string, std::string> exceptions;
  std::map<std::string, std::string> lifecycleCalls;
  std::string output;  // what it printed first, in a sentence
};

#endif
