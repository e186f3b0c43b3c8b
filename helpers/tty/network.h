#ifndef HELPERS_TTY_NETWORK_H
#define HELPERS_TTY_NETWORK_H

/// Whether the keys of this terminal may come over a network, where an eavesdropper sees when they are
/// pressed: by the variables of SSH, by the login record of the terminal, or because a multiplexer hides
/// where its user is.
bool MayBeRemote(int terminal);

#endif
