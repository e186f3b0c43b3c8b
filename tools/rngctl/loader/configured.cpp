#include "tools/rngctl/loader/configured.h"

#include <filesystem>
#include <fstream>
#include <glob.h>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr int kDeepest = 8;  // a file may include itself

void ReadFile(const std::string& file, int depth, std::vector<std::string>& directories);

void ReadIncluded(const std::string& pattern, int depth, std::vector<std::string>& directories) {
  glob_t found = {};
  if (::glob(pattern.c_str(), 0, nullptr, &found) == 0) {
    for (std::size_t i = 0; i < found.gl_pathc; ++i) {
      ReadFile(found.gl_pathv[i], depth + 1, directories);
    }
  }
  ::globfree(&found);
}

void ReadLine(const std::string& line, const fs::path& folder, int depth,
              std::vector<std::string>& directories) {
  std::istringstream words(line.substr(0, line.find('#')));
  std::string word;
  if (!(words >> word)) return;
  if (word != "include") {
    directories.push_back(word.substr(0, word.find('=')));  // an old form names a type after "="
    return;
  }
  while (words >> word) ReadIncluded(folder / word, depth, directories);
}

void ReadFile(const std::string& file, int depth, std::vector<std::string>& directories) {
  std::error_code unknown;
  if (depth > kDeepest || !fs::is_regular_file(file, unknown)) return;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    ReadLine(line, fs::path(file).parent_path(), depth, directories);
  }
}

}  // namespace

std::vector<std::string> ListConfiguredDirectories(const std::string& file) {
  std::vector<std::string> directories;
  ReadFile(file, 0, directories);
  return directories;
}
