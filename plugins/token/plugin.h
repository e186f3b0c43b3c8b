#ifndef RNG_TOKEN_PLUGIN_H
#define RNG_TOKEN_PLUGIN_H

/// What distinguishes one token plug-in from another. Defined in the source that CMake generates from plugin.cpp.in.

extern const char kKind[];  ///< the provider name
extern const char kUri[];   ///< the PKCS#11 URI that selects the plug-in's tokens

#endif
