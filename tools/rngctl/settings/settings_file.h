#ifndef TOOLS_RNGCTL_SETTINGS_SETTINGS_FILE_H
#define TOOLS_RNGCTL_SETTINGS_SETTINGS_FILE_H

#include "tools/rngctl/settings/directory_lock.h"

#include <string>

/// The file in which the library stores the default, "" if the known-path service returns no directory.
/// Asks the service in a process of its own, and throws a `Refusal` if it throws or ends that process.
std::string FindSettingsFile();

/// True also for a dangling link, and if this user may not find out whether the file exists.
bool MayExist(const std::string& file);

struct ReadingFault {
  std::string problem;  ///< a clause for "it cannot be read (...)"; "" if it can
  std::string fix;      ///< a sentence, or one that ends with a command
};

/// Why reading the file fails or does not end: a FIFO, a device, or more bytes than settings ever have.
/// It never waits, so it can be asked before the library reads the file.
ReadingFault FindReadingFault(const std::string& file);

/// Throws a `Refusal` if the file exists and cannot be read: the library would report that no default is
/// configured, or never return.
void RequireReadable(const std::string& file);

/// `FindSettingsFile`, followed by `RequireReadable`.
std::string FindReadableSettings();

/// Keeps other processes of rngctl from storing while it lives, because there is no file for a moment when
/// they do. If the directory cannot be locked, the file is read anyway.
DirectoryLock LockForReading(const std::string& file);

#endif
