#ifndef PLUGINS_UNIXDEV_SYSTEM_SOURCE_H
#define PLUGINS_UNIXDEV_SYSTEM_SOURCE_H

#include <cstddef>

/// Fills `buffer` with `size` bytes of the kernel's generator. All of them come from one source: the getrandom
/// system call, or /dev/urandom on a kernel without that call.
///
/// Waits only right after the system starts, until the kernel's pool is ready.
///
/// Threads: any. Failure: false, with zeros in the buffer.
bool DrawFromSystem(void* buffer, std::size_t size);

#endif
