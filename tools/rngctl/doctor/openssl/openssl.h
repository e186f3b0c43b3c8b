#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_OPENSSL_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_OPENSSL_H

#include "tools/rngctl/doctor/doctor.h"

/// Draws as programs that use OpenSSL do, with the configuration in force for the user, and prints from which generator
/// the bytes come. Throws a `Refusal` unless they come from this project's provider.
void RunOpensslDoctor(const DoctorRequest& request);

#endif
