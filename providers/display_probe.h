#ifndef PROVIDERS_DISPLAY_PROBE_H
#define PROVIDERS_DISPLAY_PROBE_H

/// Returns true when a connection to the default X display can be opened from this process.
///
/// Every call opens the X library and the connection afresh and closes both again; nothing is
/// cached. An X library without `XCloseDisplay` leaves the connection open, and the result is false.
/// The library is opened at run time, so on a machine without X the result is false. A server that
/// accepts and never answers blocks the call, as it blocks every X client.
///
/// Threads: not locked; the start-up calls it under the aggregator's lock.
bool ProbeXDisplay();

#endif
