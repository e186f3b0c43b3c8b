#include "tools/rngctl/settings/foreign_rights.h"

#include "tools/rngctl/refusal.h"

#include <unistd.h>

void RefuseForeignRights() {
  if (::getuid() == ::geteuid() && ::getgid() == ::getegid()) return;
  throw Refusal(kNegativeAnswer,
                "The default is not stored with the rights of another user. Remove the set-user-ID "
                "and set-group-ID bits of rngctl, and use sudo.");
}
