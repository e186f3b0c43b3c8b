#ifndef TOOLS_RNGCTL_SETTINGS_STORING_H
#define TOOLS_RNGCTL_SETTINGS_STORING_H

#include <cstdint>
#include <string>

/// What storing adds to a file at most, in bytes: a section, two keys, and their longest values.
constexpr std::uint64_t kMostAdded = 128;

/// Why this user cannot store a default in `file`, "" if that is possible. It opens and changes
/// nothing, and predicts what storing does:
///
/// - It creates missing directories.
/// - It creates a missing file, through a link if it is one.
/// - It overwrites a file that cannot be read: once with the kind, then with the device alone.
/// - It copies any other file to `file` + ".tmp", removes it, and puts the copy in its place.
///
/// The kind and the device are stored one after the other, so a new file is replaced at once, too. What
/// a security module forbids cannot be predicted.
std::string WhyNotStorable(const std::string& file);

/// The least disk space, in bytes, that storing a default in `file` needs; for `WhyNoSpace`.
std::uint64_t SpaceToStore(const std::string& file);

/// Why the directory's file system cannot take that many bytes, "" if it can.
std::string WhyNoSpace(const std::string& directory, std::uint64_t bytes);

#endif
