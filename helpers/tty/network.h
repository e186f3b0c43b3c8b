#ifndef HELPERS_TTY_NETWORK_H
#define HELPERS_TTY_NETWORK_H

#include <string>

/// Whether the keys of a terminal may come over a network, where an eavesdropper sees when they are pressed. True
/// if one of SSH's variables is set, if the terminal's login record names a remote host, or if a multiplexer hides
/// where the user is. `terminal` is the name of its device without "/dev/".
bool MayBeRemote(const std::string& terminal);

#endif
