#ifndef HELPERS_SESSION_REMOTE_DISPLAY_H
#define HELPERS_SESSION_REMOTE_DISPLAY_H

/// Whether the display of this process may be reached over a network, where an eavesdropper sees when keys
/// are pressed: if $DISPLAY names a host. SSH forwards displays as "localhost".
bool IsDisplayRemote();

#endif
