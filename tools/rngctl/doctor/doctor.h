#ifndef TOOLS_RNGCTL_DOCTOR_DOCTOR_H
#define TOOLS_RNGCTL_DOCTOR_DOCTOR_H

#include <string>

struct DoctorRequest {
  std::string kind;  ///< empty: all
  bool asJson = false;
  unsigned timeout = 10;   ///< seconds for each plug-in
  bool isOpenssl = false;  ///< examines OpenSSL instead of plug-ins
  std::string user;        ///< whose programs use OpenSSL; empty: this user's
};

/// Prints the report, and throws a `Refusal` if something is wrong.
void RunDoctor(const DoctorRequest& request);

#endif
