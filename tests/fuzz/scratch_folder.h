#ifndef TESTS_FUZZ_SCRATCH_FOLDER_H
#define TESTS_FUZZ_SCRATCH_FOLDER_H

#include "tests/fuzz/profile_model.h"

#include <string_view>

constexpr char kProfileName[] = "profile.ini";

/// The folder in memory that the letters of an input ask for. It holds the profile file with the
/// content, unless they say otherwise:
///
///     m  no profile file              d  a directory of its name
///     l  a left-over temporary file   t  a directory of the temporary file's name
profile_model::Folder ArrangedFolder(std::string_view letters, const std::string& content);

/// The name that the letters ask for: "a" one in a missing directory, "n" null.
profile_model::Text ArrangedName(std::string_view letters);

/// A folder on disk, of this process alone, for one input.
class ScratchFolder {
 public:
  explicit ScratchFolder(const profile_model::Folder& folder);
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  std::string Path(const std::string& name) const { return path + "/" + name; }

  /// Throws std::runtime_error when the folder holds anything else.
  void Expect(const profile_model::Folder& expected) const;

 private:
  std::string path;
};

/// The characters, or null.
inline const char* Characters(const profile_model::Text& text) {
  return text ? text->c_str() : nullptr;
}

/// Throws std::runtime_error, naming the two, when they differ.
void ExpectEqual(const char* what, long expected, long seen);
void ExpectEqual(const char* what, const std::string& expected, const std::string& seen);

#endif
