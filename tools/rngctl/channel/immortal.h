#ifndef TOOLS_RNGCTL_CHANNEL_IMMORTAL_H
#define TOOLS_RNGCTL_CHANNEL_IMMORTAL_H

#include <new>

/// A global object that is never destroyed: plug-ins may call this program after its destructors ran.
template <typename Value>
union Immortal {
  Immortal() { new (&value) Value(); }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;
  ~Immortal() {}
  Value value;
};

#endif
