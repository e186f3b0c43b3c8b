#ifndef BENCHMARKS_MACHINE_FOLDER_H
#define BENCHMARKS_MACHINE_FOLDER_H

#include <filesystem>

/// A new temporary folder. The destructor removes it with its contents.
class Folder {
 public:
  explicit Folder(const std::filesystem::path& parent);
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  const std::filesystem::path path;
};

#endif
