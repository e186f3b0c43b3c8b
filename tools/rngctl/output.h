#ifndef TOOLS_RNGCTL_OUTPUT_H
#define TOOLS_RNGCTL_OUTPUT_H

#include <string>
#include <string_view>

/// Where the bytes go: standard output or a file. A regular file is written beside its place,
/// readable by its owner alone, and takes the place when all is there: a failure or an interruption
/// leaves the old one as it was, and nothing beside it. Throws a `Refusal` with the system's reason.
class Output {
 public:
  explicit Output(const std::string& path);  ///< empty: standard output
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  bool IsTerminal() const;
  void Write(std::string_view text);
  void Commit();  ///< all is written: puts the file in its place

 private:
  [[noreturn]] void Refuse() const;

  std::string file;
  std::string temporary;  // empty when written directly
  int descriptor;
};

#endif
