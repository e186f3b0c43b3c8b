#ifndef OPENSSL_MODULE_PARAMETERS_H
#define OPENSSL_MODULE_PARAMETERS_H

#include <cstdint>
#include <openssl/core.h>
#include <openssl/params.h>

/// Answers to OpenSSL's requests for parameters. The module has its own because it does not link with libcrypto: a
/// program may have a copy of libcrypto of its own, beside which the system's must not be loaded.

/// The one of that name, or null. `parameters` may be null, too.
OSSL_PARAM* FindParameter(OSSL_PARAM* parameters, const char* name);

/// Returns 1, or 0 if the parameter has no room for the value. A null `parameter` is not asked for, which is no failure.
int SetNumber(OSSL_PARAM* parameter, std::uint64_t number);
int SetText(OSSL_PARAM* parameter, const char* text);      ///< copied into the caller's buffer
int SetConstant(OSSL_PARAM* parameter, const char* text);  ///< a pointer to a constant

#endif
