#include "tools/rngctl/settings/foreign_rights.h"

#include "tools/rngctl/refusal.h"

#include <unistd.h>

void RefuseForeignRights() {
  if (::getuid() == ::geteuid() && ::getgid() == ::getegid()) return;
  throw Refusal(kNegativeAnswer,
                "rngctl does not store a default with the rights of another user. Remove the "
                "set-user-ID and set-group-ID bits from rngctl, and use sudo.");
}
