#ifndef TOOLS_RNGCTL_DRAWING_OUTPUT_H
#define TOOLS_RNGCTL_DRAWING_OUTPUT_H

#include "tools/rngctl/drawing/new_file.h"
#include "tools/rngctl/process/forked/secret_bytes.h"

#include <optional>
#include <string>

/// What happens to a file that belongs to another user.
enum class OthersFile { kRefused, kRefusedUnlessForced, kReplaced };

/// Where the bytes go: standard output, another descriptor, a device or FIFO, or a file. Only a file is
/// replaced as a whole, see `NewFile`. Refuses a link, whose owner could choose where the bytes go, and
/// what belongs to another user, who could read them. Throws a `Refusal` with the reason.
class Output {
 public:
  /// An empty path is standard output.
  Output(const std::string& path, OthersFile othersFile);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  bool IsTerminal() const;
  bool IsStandardOutput() const;
  bool MayBeShown() const;  ///< a terminal, or a pipe, which may lead to one
  bool AppearsAtEnd() const { return file.has_value(); }  ///< only `Commit` shows what was written
  bool IsSameAs(const Output& other) const;  ///< each would replace or follow the other
  void Write(const SecretBytes& bytes);
  void Commit();  ///< after the last byte: makes the file appear

  /// In a forked process: leaves the file and the device to the parent.
  void LeaveToParent();

 private:
  void Open();
  struct stat Look(const Place& place) const;
  struct stat Target() const;
  void CheckOwner(const struct stat& found) const;
  void OpenSpecialFile(const Place& place, const struct stat& found);
  [[noreturn]] void Refuse(const std::string& reason) const;
  [[noreturn]] void RefuseWith(int error) const;

  const std::string name;  // the path
  const OthersFile ofOthers;
  std::optional<NewFile> file;
  Descriptor special;
  int descriptor;
};

#endif
