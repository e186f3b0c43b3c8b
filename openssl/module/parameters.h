#ifndef OPENSSL_MODULE_PARAMETERS_H
#define OPENSSL_MODULE_PARAMETERS_H

#include <cstdint>
#include <openssl/core.h>
#include <openssl/params.h>

/// Access to the parameters that OpenSSL passes. OpenSSL has such functions in libcrypto, with which the module must
/// not link: the host may have its own copy, and the system's must not be loaded as well.

/// Returns the parameter of that name, or null. `parameters` may be null.
OSSL_PARAM* FindParameter(OSSL_PARAM* parameters, const char* name);

/// Stores a value. Returns 0 if the parameter has the wrong type or size for it, else 1. A null `parameter` was not
/// requested: nothing is stored, and the result is 1. Only SetText, which copies the text, needs a parameter.
int SetNumber(OSSL_PARAM* parameter, std::uint64_t number);
int SetText(OSSL_PARAM* parameter, const char* text);
int SetConstant(OSSL_PARAM* parameter, const char* text);  ///< a pointer to a constant

#endif
