#ifndef TOOLS_RNGCTL_CHANNEL_PRINTED_LINES_H
#define TOOLS_RNGCTL_CHANNEL_PRINTED_LINES_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

struct PrintedLine {
  std::string text;
  std::size_t count;  ///< how often it was printed
};

/// What a process prints, each distinct line once. However much that is, it takes little memory: long
/// lines are cut, and only the first hundred distinct ones are kept.
class PrintedLines {
 public:
  /// The next piece; lines may continue in the piece after it.
  void Add(const std::string& piece);

  /// After the last piece: the rest counts as a line, too.
  void Finish();

  /// In the order in which they appeared first. Empty ones are left out.
  const std::vector<PrintedLine>& Lines() const { return lines; }

  /// How many lines are not among them.
  std::size_t CountOmitted() const { return omitted; }

 private:
  std::vector<PrintedLine> lines;
  std::map<std::string, std::size_t> places;  // in `lines`
  std::string rest;                           // the line that is not complete
  std::size_t omitted = 0;
};

#endif
