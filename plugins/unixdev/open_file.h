#ifndef PLUGINS_UNIXDEV_OPEN_FILE_H
#define PLUGINS_UNIXDEV_OPEN_FILE_H

#include <cstddef>
#include <sys/types.h>

/// A file that is open for reading while the object lives. Neither opening nor reading waits.
class OpenFile {
 public:
  explicit OpenFile(const char* path);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  int Error() const { return error; }     ///< the errno of opening it, 0 if it is open
  int Get() const { return descriptor; }  ///< borrowed

  bool IsCharacterDevice() const;
  bool IsCharacterDevice(unsigned major, unsigned minor) const;  ///< whether it is this device

  /// Like the system's read, with its result and errno.
  ssize_t Read(void* buffer, std::size_t size) const;

 private:
  const int descriptor;
  const int error;
};

#endif
