#ifndef TOOLS_RNGCTL_CHECK_CHECK_H
#define TOOLS_RNGCTL_CHECK_CHECK_H

#include <string>
#include <vector>

struct CheckRequest {
  std::string file;                    ///< the path of the plug-in
  std::string factory;                 ///< empty: the catalogue's
  std::vector<std::string> only = {};  ///< the checks to run; empty: all
  bool asJson = false;
  unsigned timeout = 10;  ///< seconds for each call
};

/// Prints the report, and throws a `Refusal` when the plug-in breaks a rule.
void RunCheck(const CheckRequest& request);

#endif
