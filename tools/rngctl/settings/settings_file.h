#ifndef TOOLS_RNGCTL_SETTINGS_SETTINGS_FILE_H
#define TOOLS_RNGCTL_SETTINGS_SETTINGS_FILE_H

#include "tools/rngctl/settings/directory_lock.h"

#include <string>

/// The file in which the library stores the default, "" if the known-path service returns no directory.
/// Throws a `Refusal` if the service throws.
std::string FindSettingsFile();

/// True also when this user may not look whether it exists, and for a dangling link.
bool MayExist(const std::string& file);

struct ReadingFault {
  std::string problem;  ///< in words that follow "it cannot be read"; "" if it can
  std::string fix;      ///< a sentence
};

/// Why reading the file fails or does not end: a FIFO, a device, or more bytes than settings ever have.
/// It never waits, so it can be asked before the library reads the file.
ReadingFault FindReadingFault(const std::string& file);

/// Ends the command if the file exists and cannot be read: the library would report that no default is
/// configured, or never return.
void RefuseUnreadableSettings();

/// Keeps other processes of rngctl from storing while it lives: for a moment, they leave no file. Where
/// the directory cannot be locked, the file is read all the same.
DirectoryLock LockForReading();

#endif
