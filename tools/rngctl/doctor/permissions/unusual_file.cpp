#include "tools/rngctl/doctor/permissions/unusual_file.h"

#include "tools/rngctl/doctor/permissions/rights.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using Sort = Subject::Sort;

// "librngdsdr.so" may be a link to "librngdsdr.so.1" beside it.
bool IsLinkToVersion(const fs::path& file, const fs::path& target) {
  const std::string own = file.filename();
  const std::string other = target;
  return other.size() > own.size() && other.starts_with(own + ".") &&
         other.find_first_not_of(".0123456789", own.size()) == std::string::npos;
}

PermissionReport DescribeLink(const Subject& subject, const std::string& target) {
  const std::string link = "it is a link to " + target;
  std::error_code absent;
  if (subject.sort == Sort::kNewSettings) {
    return {subject.path, link + ", and storing a default overwrites that file",
            "Remove it: rm " + subject.path};
  }
  if (subject.sort == Sort::kSettings && fs::exists(subject.path, absent)) {
    return {subject.path, link + ", and storing a default replaces the link, not that file",
            "Put the file itself there."};
  }
  if (subject.sort == Sort::kSettings) {
    return {subject.path, link + ", where there is no file, and storing a default creates one",
            "Remove it: rm " + subject.path};
  }
  return {subject.path, link + ", so programs load what is there",
          "Unless that is intended, put the file itself there."};
}

PermissionReport DescribeNames(const Subject& subject, nlink_t count) {
  const std::string names = "it has " + std::to_string(count) + " names";
  if (subject.sort == Sort::kNewSettings) {
    return {subject.path, names + ", and storing a default overwrites the file under all of them",
            "Remove it: rm " + subject.path};
  }
  return {subject.path, names + " (hard links), so who writes to one of them changes all",
          "Unless that is intended, put a copy there that has only this name."};
}

}  // namespace

void AddUnusualFile(std::vector<PermissionReport>& findings, const Subject& subject) {
  if (subject.sort == Sort::kDirectory || subject.sort == Sort::kDependency) return;
  const Rights rights = ReadRights(subject.path);
  if (!rights.Exists()) return;
  if (rights.IsLink()) {
    std::error_code unknown;
    const fs::path target = fs::read_symlink(subject.path, unknown);
    const bool isUsual = subject.sort == Sort::kLibrary ||
                         (subject.sort == Sort::kPlugin && IsLinkToVersion(subject.path, target));
    if (!isUsual) AddPermission(findings, DescribeLink(subject, target));
  } else if (!rights.IsRegular()) {
    AddPermission(findings, {subject.path, "it is not a regular file",
                             "Remove it, and put a regular file there if one is needed."});
  } else if (rights.names > 1) {
    AddPermission(findings, DescribeNames(subject, rights.names));
  }
}
