#include "tools/rngctl/loader/error.h"

LoaderError ParseLoaderError(const std::string& words) {
  const std::string cannotOpen = ": cannot open shared object file: ";
  const std::string undefined = "undefined symbol: ";
  LoaderError error{words, words.substr(0, words.find(": ")), "", ""};
  if (error.file == words) error.file.clear();
  if (const auto end = words.find(cannotOpen); end != std::string::npos) {
    error.missingFile = words.substr(0, end);
  } else if (const auto mark = words.find(undefined); mark != std::string::npos) {
    const auto start = mark + undefined.size();
    error.undefinedSymbol = words.substr(start, words.find_first_of(", \t", start) - start);
  }
  return error;
}
