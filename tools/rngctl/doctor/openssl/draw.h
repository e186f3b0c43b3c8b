#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_DRAW_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_DRAW_H

#include "tools/rngctl/doctor/openssl/messages.h"

/// Which configuration OpenSSL will read in this process.
void FindOpensslSettings(OpensslDraw& answer);

/// Loads the configuration as programs do, and draws the bytes of a key. They are wiped. Tells from which generator
/// they come, or why there are none.
void DrawWithOpenssl(OpensslDraw& answer);

#endif
