// Stands in for a helper: writes what it has inherited to descriptor 3, one item per line.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::string OpenDescriptors() {
  std::string text = "descriptors";
  for (int number = 0; number < 4096; ++number) {
    std::error_code closed;
    const auto target =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(number), closed).string();
    if (!closed) text += ' ' + std::to_string(number) + '=' + target.substr(0, target.find(':'));
  }
  return text + '\n';
}

std::string SignalsOf() {
  std::ifstream status("/proc/self/status");
  std::string text;
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("SigBlk", 0) == 0 || line.rfind("SigIgn", 0) == 0) text += line + '\n';
  }
  return text;
}

std::string Environment() {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry; ++entry)
    entries.push_back("variable " + std::string(*entry) + '\n');
  std::sort(entries.begin(), entries.end());
  std::string text;
  for (const std::string& entry : entries) text += entry;
  return text;
}

}  // namespace

int main() {
  const std::string text = OpenDescriptors() + SignalsOf() + Environment() + "folder " +
                           std::filesystem::current_path().string() + '\n';
  return ::write(3, text.data(), text.size()) < 0;
}
