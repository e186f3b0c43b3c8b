#ifndef TOOLS_RNGCTL_SETTINGS_OLD_SETTINGS_H
#define TOOLS_RNGCTL_SETTINGS_OLD_SETTINGS_H

#include "tools/rngctl/files/path_facts.h"

#include <string>
#include <vector>

/// The settings file as it is before a default is stored, in memory: on a full disk there is no room for a
/// second copy.
class OldSettings {
 public:
  explicit OldSettings(const std::string& path);

  const std::string& File() const { return file; }
  const PathFacts& Facts() const { return facts; }  ///< of what the path leads to

  /// Whether the file still has all lines that storing does not replace.
  bool AreLinesKept() const;

  /// Makes the file what it was: its content, mode, and as far as permitted its owner and group; a link;
  /// or no file. Returns a sentence about the result.
  std::string PutBack() const;

 private:
  bool Restore() const;
  bool RestoreLink() const;
  bool RestoreContent() const;
  bool WriteCopy() const;

  const std::string file;
  const PathFacts entry;
  const PathFacts facts;
  const std::string target;  // of a link
  const std::string content;
  const std::vector<std::string> lines;
};

#endif
