#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_CHILD_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_CHILD_H

/// The hidden command of the children that use OpenSSL. OpenSSL's configuration may load modules of others, so a child
/// may not survive it.
inline constexpr char kOpensslChildCommand[] = "openssl-child";
void RunOpensslChild(int channel);

#endif
