#ifndef SETTINGS_DIRECTORIES_H
#define SETTINGS_DIRECTORIES_H

/// Creates, with mode 0775 less the umask, every missing directory that `path` (NUL-terminated, not
/// null) names before one of its "/". The last component is never created: given the path of a
/// file, its directories are made and the file is left to the writer. Nothing is normalised.
///
/// Returns true when the whole path or every directory of it exists afterwards, false when the path
/// is empty or relative, or a directory cannot be made, also when somebody else makes it at the
/// same moment. Directories made before the failure stay.
bool CreateParentDirectories(const char* path);

#endif
