#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_REPORT_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_REPORT_H

#include <string>
#include <vector>

enum class OpensslResult {
  kDrawn,           ///< from our provider
  kDrawnElsewhere,  ///< from OpenSSL's own generator, or another one
  kFailed           ///< programs get no bytes, or crash or hang
};

/// What was found, for both printers. A text is "" if there is nothing to say.
struct OpensslReport {
  std::string user = {};  ///< as it was given
  std::vector<std::string> environment =
      {};                   ///< the variables that OpenSSL reads: "OPENSSL_CONF=/a"
  std::string file = {};    ///< the configuration in force
  std::string module = {};  ///< the path of our provider's module
  OpensslResult result = OpensslResult::kFailed;
  std::string generator = {};  ///< that made the draw: "Rutoken 3A7F", or "CTR-DRBG of default"
  std::string problem = {};
  std::string fix = {};
  std::vector<std::string> warnings = {};
};

void PrintText(const OpensslReport& report);
void PrintJson(const OpensslReport& report);

#endif
