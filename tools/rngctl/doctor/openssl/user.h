#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_USER_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_USER_H

#include <string>

/// In a child: gives this process the identity and the groups of that user, "" for the present one. Returns why that is
/// not possible, in a sentence, or "". May ask services for accounts, which may hang.
std::string BecomeUser(const std::string& name);

#endif
