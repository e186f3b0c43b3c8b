#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_USER_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_USER_H

#include <string>

/// Called in a child process. Gives it the identity and the groups of that user; "" means the present one. Returns "",
/// or a sentence that says why that is not possible. May query account services, which may hang.
std::string BecomeUser(const std::string& name);

#endif
