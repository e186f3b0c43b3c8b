#include "tools/rngctl/doctor/permissions/permissions.h"

#include "providers/catalogue.h"
#include "tools/rngctl/doctor/permissions/findings.h"
#include "tools/rngctl/doctor/permissions/rights.h"
#include "tools/rngctl/loader/configured.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Sort = Subject::Sort;
using Paths = std::vector<std::string>;

class Subjects {
 public:
  explicit Subjects(const DoctorReport& found) : report(found), libraryPath(ListLibraryPath()) {
    struct stat status = {};
    const bool belongsToRoot =
        ::stat(report.search.library.c_str(), &status) == 0 && status.st_uid == 0;
    isRootsInstallation = ::geteuid() == 0 || belongsToRoot;
  }

  std::vector<Subject> List() {
    AddDirectories();
    Add(FindLibrary(), Sort::kLibrary);
    AddPlugins();
    AddHelpers();
    if (fs::path(report.settings.service).is_absolute()) {
      Add(report.settings.service, Sort::kLibrary);
    }
    if (!report.settings.file.empty()) {
      Add(report.settings.file, Sort::kSettings);
      Add(report.settings.file + ".tmp", Sort::kNewSettings);
    }
    return subjects;
  }

 private:
  // LD_LIBRARY_PATH of another user does not reach root's processes.
  bool IsInLibraryPath(const std::string& path) const {
    return std::any_of(libraryPath.begin(), libraryPath.end(), [&path](const std::string& each) {
      std::error_code absent;
      return fs::equivalent(each, path, absent) ||
             fs::equivalent(each, fs::path(path).parent_path(), absent);
    });
  }

  void Add(const std::string& path, Sort sort) {
    const bool isRoots = ::geteuid() == 0 || (isRootsInstallation && !IsInLibraryPath(path));
    subjects.push_back({path, sort, isRoots});
  }

  void AddDirectories() {
    for (const Paths& directories : {report.search.directories, report.search.defaults,
                                     ListConfiguredDirectories(kLoaderConfiguration)}) {
      for (const std::string& directory : directories) Add(directory, Sort::kDirectory);
    }
    for (const std::string& directory : WithProcessorDirectories(report.search).directories) {
      std::error_code absent;  // then its parent decides who can create it
      if (fs::exists(directory, absent)) Add(directory, Sort::kDirectory);
    }
    for (const std::string& directory : libraryPath) {
      subjects.push_back({directory, Sort::kDirectory, ::geteuid() == 0});
    }
  }

  // Those of kinds that were not examined, too: every start loads them.
  void AddPlugins() {
    for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
      const std::string file = FindFirst(row.libraryFile, report.search);
      if (!file.empty()) Add(file, Sort::kPlugin);
    }
    for (const GeneratorReport& row : report.generators) {
      if (!row.file.empty()) Add(row.file, Sort::kPlugin);
      for (const std::string& file : row.dependencies) Add(file, Sort::kDependency);
    }
  }

  // The programs that plug-ins of this project start.
  void AddHelpers() {
    std::set<fs::path> folders;
    for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
      const fs::path file = FindFirst(row.libraryFile, report.search);
      if (!file.empty()) folders.insert(file.parent_path() / RNG_HELPERS_FROM_PLUGINS);
    }
    for (const fs::path& folder : folders) {
      std::error_code absent;
      for (const auto& entry : fs::directory_iterator(folder, absent)) {
        Add(folder.lexically_normal(), Sort::kDirectory);
        Add(entry.path().lexically_normal(), Sort::kLibrary);
      }
    }
  }

  const DoctorReport& report;
  const Paths libraryPath;
  bool isRootsInstallation;
  std::vector<Subject> subjects = {};
};

}  // namespace

std::vector<PermissionReport> FindPermissions(const DoctorReport& report) {
  const Users users = FindUsers();
  std::vector<PermissionReport> findings;
  for (const Subject& subject : Subjects(report).List()) AddFindings(findings, subject, users);
  return findings;
}
