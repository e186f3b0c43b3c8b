#ifndef TOOLS_RNGCTL_TERMINAL_LIKENESS_H
#define TOOLS_RNGCTL_TERMINAL_LIKENESS_H

#include <string>
#include <vector>

/// The known name that somebody who wrote `text` probably meant, "" if none is close enough. Upper and
/// lower case do not count. Short names may differ in one letter, names of six letters and more in
/// two; two letters that changed places count as one. Among equally close names the first is taken.
std::string FindLikeness(const std::string& text, const std::vector<std::string>& known);

#endif
