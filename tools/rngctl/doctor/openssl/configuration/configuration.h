#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_CONFIGURATION_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_CONFIGURATION_H

#include "tools/rngctl/doctor/openssl/messages.h"

/// Reads the configuration in force. Unless it is in order, finds out why programs do not draw from our provider: the
/// first cause, in the order in which OpenSSL comes across them.
OpensslConfiguration ReadOpensslConfiguration(bool isInOrder);

#endif
