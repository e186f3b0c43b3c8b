#ifndef HELPERS_TTY_NETWORK_H
#define HELPERS_TTY_NETWORK_H

#include <string>

/// Whether the keys of a terminal may come over a network, where an eavesdropper sees when they are pressed:
/// by the variables of SSH, by the login record of the terminal, or because a multiplexer hides where its user
/// is. `terminal` is the name of its device without "/dev/".
bool MayBeRemote(const std::string& terminal);

#endif
