#ifndef TOOLS_RNGCTL_DOCTOR_SETTINGS_STORING_H
#define TOOLS_RNGCTL_DOCTOR_SETTINGS_STORING_H

#include <string>

/// Why this user cannot store a default in `file`, "" if that is possible. Foresees what storing does,
/// and opens and changes nothing:
///
/// - It creates missing directories.
/// - A file that cannot be opened for reading is written in place, through a link if it is one.
/// - Any other file is copied to `file` + ".tmp", removed, and replaced by the copy.
///
/// The kind and the device are stored one after the other, so a new file is replaced at once, too. What
/// a security module forbids cannot be foreseen.
std::string WhyNotStorable(const std::string& file);

#endif
