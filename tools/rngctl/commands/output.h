#ifndef TOOLS_RNGCTL_COMMANDS_OUTPUT_H
#define TOOLS_RNGCTL_COMMANDS_OUTPUT_H

#include <string>
#include <string_view>

/// Where the bytes go: standard output or a file. A regular file is written under another name,
/// readable only by its owner, and renamed when it is complete: a failure or an interruption leaves the
/// old file as it was and no other file. Throws a `Refusal` with the system's reason.
class Output {
 public:
  explicit Output(const std::string& path);  ///< empty: standard output
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  bool IsTerminal() const;
  void Write(std::string_view text);
  void Commit();  ///< everything is written: renames the file

 private:
  [[noreturn]] void Refuse() const;

  std::string file;
  std::string temporary;  // empty when written directly
  int descriptor;
};

#endif
