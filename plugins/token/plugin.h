#ifndef RNG_TOKEN_PLUGIN_H
#define RNG_TOKEN_PLUGIN_H

/// What one token plug-in differs in from the others. Defined in the source that CMake makes from plugin.cpp.in.

extern const char kKind[];  ///< the provider name
extern const char kUri[];   ///< the PKCS#11 URI that says which tokens are the plug-in's

#endif
