#include "tools/rngctl/doctor/permissions/way.h"

#include <deque>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40;  // as many as the system follows

// What is still to be looked up, and where.
struct Rest {
  fs::path place = "/";
  std::deque<fs::path> parts = {};

  void Prepend(const fs::path& path) {
    if (path.is_absolute()) place = "/";
    const fs::path relative = path.relative_path();
    parts.insert(parts.begin(), relative.begin(), relative.end());
  }

  fs::path TakePart() {
    const fs::path part = parts.front();
    parts.pop_front();
    return part;
  }
};

// True for a part that is no lookup: nobody can replace these entries of a directory.
bool IsFixed(const fs::path& part) { return part.empty() || part == "." || part == ".."; }

}  // namespace

std::vector<Step> WalkTo(const std::string& path) {
  std::vector<Step> steps;
  std::error_code unknown;
  Rest rest;
  rest.Prepend(fs::absolute(path, unknown));
  for (int links = 0; !rest.parts.empty() && links <= kMostLinks;) {
    const fs::path part = rest.TakePart();
    if (part == "..") rest.place = rest.place.parent_path();
    if (IsFixed(part)) continue;
    const fs::path entry = rest.place / part;
    steps.push_back({rest.place, ReadRights(rest.place), entry, ReadRights(entry)});
    if (!steps.back().ofEntry.Exists()) break;
    if (steps.back().ofEntry.IsLink()) {
      ++links;
      rest.Prepend(fs::read_symlink(entry, unknown));
    } else {
      rest.place = entry;
    }
  }
  return steps;
}
