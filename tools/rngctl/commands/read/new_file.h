#ifndef TOOLS_RNGCTL_COMMANDS_READ_NEW_FILE_H
#define TOOLS_RNGCTL_COMMANDS_READ_NEW_FILE_H

#include "tools/rngctl/process/descriptor.h"

#include <string>

/// The open directory of a file, and the last component of its path: what is done with the two is done
/// in that directory, whatever becomes of the path. Only the kernel follows links on the way to it, so
/// its rules for links of other users apply.
struct Place {
  Descriptor directory;
  std::string name;
};

/// Throws a `std::system_error` if the directory cannot be opened, or the path names a directory.
Place OpenPlace(const std::string& path);

/// A file that appears when it is complete. Until then it has another name in the same directory, and
/// whatever ends this process empties and removes it, except SIGKILL. Only its owner can read it. There is at most
/// one. Failures are thrown as `std::system_error`.
class NewFile {
 public:
  explicit NewFile(Place where);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  int Get() const { return file.Get(); }
  const Place& Where() const { return place; }

  /// Replaces what has the name now. The file is then on the disk, also after a power failure.
  void Commit();

  /// In a forked process: leaves the file and its removal to the parent.
  void LeaveToParent();

 private:
  void Create();
  bool TryToCreate();
  void SyncDirectory() const;

  Place place;
  std::string temporary;
  Descriptor file;
};

#endif
