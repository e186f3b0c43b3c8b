#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_DRAW_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_DRAW_H

#include "tools/rngctl/doctor/openssl/messages.h"

/// Finds out which configuration OpenSSL will read in this process.
void FindOpensslSettings(OpensslDraw& answer);

/// Loads the configuration as programs do, and draws the bytes of a key. Reports from which
/// generator they come, or why there are none. Wipes them.
void DrawWithOpenssl(OpensslDraw& answer);

#endif
