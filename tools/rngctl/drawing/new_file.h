#ifndef TOOLS_RNGCTL_DRAWING_NEW_FILE_H
#define TOOLS_RNGCTL_DRAWING_NEW_FILE_H

#include "tools/rngctl/process/descriptor.h"

#include <string>

/// The directory of a file, held open, and the last component of its path. Operations on the two stay in
/// that directory even if the path changes. The kernel follows the links on the way to it, so its
/// protection against links of other users applies.
struct Place {
  Descriptor directory;
  std::string name;
};

/// Throws a `std::system_error` if the directory cannot be opened, or the path names a directory.
Place OpenPlace(const std::string& path);

/// A file that appears when it is complete. Until then it has another name in the same directory, and is
/// emptied and removed if this process ends, except by SIGKILL. Only its owner can read it. At most two
/// exist at a time. Failures are thrown as `std::system_error`.
class NewFile {
 public:
  explicit NewFile(Place where);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  int Get() const { return file.Get(); }
  const Place& Where() const { return place; }

  /// Gives the file its name, replacing what has it. After that, the file survives a power failure.
  void Commit();

  /// In a forked process: leaves the file and its removal to the parent.
  void LeaveToParent();

 private:
  void Create();
  bool TryToCreate();
  void SyncDirectory() const;

  void Rename();
  void Forget() const;

  Place place;
  std::string temporary;
  Descriptor file;
};

#endif
