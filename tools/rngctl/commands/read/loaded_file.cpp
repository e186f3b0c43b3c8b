#include "tools/rngctl/commands/read/loaded_file.h"

#include "helpers/gathering/hmac.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>

namespace {

// A part of a file in the memory of this process.
struct Mapping {
  std::uintptr_t start = 0;
  std::uintptr_t end = 0;
  ino_t node = 0;
  std::string path = {};
};

// A line of /proc/self/maps: "start-end rights offset device node path".
Mapping ParseMapping(const std::string& line) {
  Mapping mapping;
  std::istringstream parts(line);
  char dash = 0;
  std::string rights;
  std::string device;
  std::string offset;
  parts >> std::hex >> mapping.start >> dash >> mapping.end >> rights >> offset >> device >>
      std::dec >> mapping.node >> std::ws;
  std::getline(parts, mapping.path);
  return mapping;
}

Mapping FindMapping(const void* code) {
  const auto address = reinterpret_cast<std::uintptr_t>(code);
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const Mapping mapping = ParseMapping(line);
    if (mapping.start <= address && address < mapping.end) return mapping;
  }
  return {};
}

// The path of a file that is gone ends with " (deleted)". The device is not compared, because some file systems report
// another one in that list than for the file.
bool IsStillThere(const Mapping& mapping) {
  struct stat status = {};
  return ::stat(mapping.path.c_str(), &status) == 0 && status.st_ino == mapping.node;
}

std::string DigestOf(const std::string& content) {
  constexpr char kDigits[] = "0123456789abcdef";
  unsigned char digest[Sha256::kSize];
  Sha256 hash;
  hash.Add(content.data(), content.size());
  hash.Finish(digest);
  std::string text;
  for (const unsigned char byte : digest) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

}  // namespace

LoadedFile FindLoadedFile(const void* code) {
  const Mapping mapping = FindMapping(code);
  if (mapping.path.empty() || mapping.path[0] != '/') {
    return {mapping.path, "", "is not in a file"};
  }
  std::ifstream file(mapping.path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  if (!IsStillThere(mapping) || content.empty()) {
    return {mapping.path, "", "has been replaced since it was loaded, or cannot be read"};
  }
  return {mapping.path, DigestOf(content), ""};
}
