#include "tests/fuzz/scratch_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace fs = std::filesystem;

using profile_model::Folder;

namespace {

// In memory where there is such a place: every input makes some files.
fs::path Place() {
  const fs::path memory = "/dev/shm";
  const bool isUsable = ::access(memory.c_str(), W_OK | X_OK) == 0;
  return (isUsable ? memory : fs::temp_directory_path()) /
         ("rng-fuzz-" + std::to_string(::getpid()));
}

std::string ContentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Shown(const std::string& text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (' ' <= byte && byte < 0x7F && c != '\\') {
      shown += c;
    } else {
      shown += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
  }
  return shown;
}

std::string Shown(const Folder& folder) {
  std::string shown;
  for (const auto& [name, content] : folder) shown += name + " \"" + Shown(content) + "\" ";
  return shown;
}

void Differ(const std::string& what, const std::string& expected, const std::string& seen) {
  throw std::runtime_error(what + "\n  expected " + expected + "\n  seen     " + seen);
}

}  // namespace

Folder ArrangedFolder(std::string_view letters, const std::string& content) {
  const auto asksFor = [&](char letter) { return letters.find(letter) != letters.npos; };
  const std::string name = kProfileName;
  Folder folder;
  if (asksFor('d')) {
    folder[name + "/"];
  } else if (!asksFor('m')) {
    folder[name] = content;
  }
  if (asksFor('t')) {
    folder[name + ".tmp/"];
  } else if (asksFor('l')) {
    folder[name + ".tmp"] = "[left]\nover=1\n";
  }
  return folder;
}

profile_model::Text ArrangedName(std::string_view letters) {
  if (letters.find('n') != letters.npos) return std::nullopt;
  const bool isMissing = letters.find('a') != letters.npos;
  return (isMissing ? "absent/" : "") + std::string(kProfileName);
}

ScratchFolder::ScratchFolder(const Folder& folder) : path(Place()) {
  fs::remove_all(path);  // of a process that had our number and was killed
  fs::create_directory(path);
  for (const auto& [name, content] : folder) {
    if (name.back() == '/') {
      fs::create_directory(Path(name));
    } else {
      std::ofstream(Path(name), std::ios::binary) << content;
    }
  }
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

void ScratchFolder::Expect(const Folder& expected) const {
  Folder seen;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    const std::string name = entry.path().filename();
    if (entry.is_directory()) {
      seen[name + "/"];
    } else {
      seen[name] = ContentOf(entry.path());
    }
  }
  if (seen != expected) Differ("folder", Shown(expected), Shown(seen));
}

void ExpectEqual(const char* what, long expected, long seen) {
  if (seen != expected) Differ(what, std::to_string(expected), std::to_string(seen));
}

void ExpectEqual(const char* what, const std::string& expected, const std::string& seen) {
  if (seen != expected) Differ(what, Shown(expected), Shown(seen));
}
