#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_PROVIDER_FAULT_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_PROVIDER_FAULT_H

#include "tools/rngctl/doctor/openssl/configuration/sections.h"

/// The path of our provider's module, "" if the configuration has none. `start` is the section that "openssl_conf" names.
std::string FindModule(const OpensslSections& sections, const std::string& start);

/// Why OpenSSL does not load our provider.
OpensslFault FindProviderFault(const OpensslSections& sections, const std::string& start,
                               const std::string& file);

/// What does not keep OpenSSL from loading our provider, but is not what the author of the configuration meant.
std::vector<std::string> FindProviderWarnings(const OpensslSections& sections,
                                              const std::string& start);

#endif
