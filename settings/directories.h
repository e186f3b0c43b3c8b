#ifndef SETTINGS_DIRECTORIES_H
#define SETTINGS_DIRECTORIES_H

/// Creates, with mode 0775 less the umask, every missing directory that `path` (NUL-terminated, not
/// null) names before one of its "/". The last component is never created: for the path of a file,
/// this creates its directories, and the writer creates the file. Nothing is normalised.
///
/// Returns true when the whole path or every directory of it exists afterwards. Returns false when
/// the path is empty or relative, or a directory cannot be created, even if that is because
/// somebody else creates it at the same moment. Directories created before the failure stay.
bool CreateParentDirectories(const char* path);

#endif
