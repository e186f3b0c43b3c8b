#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_CHILD_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_CHILD_H

/// The hidden command of the child processes that use OpenSSL. They are separate because OpenSSL's configuration may
/// load any module, which may crash or hang.
inline constexpr char kOpensslChildCommand[] = "openssl-child";
void RunOpensslChild(int channel);

#endif
