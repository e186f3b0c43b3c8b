#include "tools/rngctl/doctor/causes/file_fault.h"

#include "tools/rngctl/files/path_facts.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Consoles, serial lines and pseudo-terminals. Only opening a device would tell for certain.
bool IsTerminal(const struct stat& file) {
  const unsigned majors[] = {4, 5, 136, 137, 138, 139, 140, 141, 142, 143, 166, 188, 204};
  return S_ISCHR(file.st_mode) &&
         std::find(std::begin(majors), std::end(majors), major(file.st_rdev)) != std::end(majors);
}

std::string NameOfType(const struct stat& file) {
  if (S_ISFIFO(file.st_mode)) return "it is a named pipe (FIFO)";
  if (S_ISSOCK(file.st_mode)) return "it is a socket";
  if (S_ISDIR(file.st_mode)) return "it is a directory";
  if (IsTerminal(file)) return "it is a terminal";
  return S_ISREG(file.st_mode) ? "" : "it is a device";
}

FileFault FaultOfType(const std::string& file, const struct stat& status) {
  const std::string reason = NameOfType(status);
  if (reason.empty()) return {};
  return {reason, "Remove " + file + " and install the plug-in in its place.",
          !S_ISDIR(status.st_mode), S_ISFIFO(status.st_mode) || IsTerminal(status)};
}

FileFault FaultOfPath(const std::string& file, int error) {
  if (error == EACCES) {
    const std::string directory = FindUnsearchable(file);
    return {"this user may not search the directory " + directory,
            "Make it searchable: chmod a+x " + directory};
  }
  std::error_code unknown;
  if (!fs::is_symlink(file, unknown)) return {};
  const std::string target = fs::read_symlink(file, unknown);
  if (error == ELOOP) {
    return {
        "it is a symbolic link that leads back to itself",
        "Remove the link " + file + " to " + target + ", and install the plug-in in its place."};
  }
  return {"it is a dangling symbolic link", "Reinstall the plug-in: " + file + " is a link to " +
                                                target + ", where there is no file."};
}

}  // namespace

FileFault FindFileFault(const std::string& file) {
  struct stat status = {};
  if (::stat(file.c_str(), &status) != 0) return FaultOfPath(file, errno);
  const FileFault fault = FaultOfType(file, status);
  if (!fault.reason.empty() || ::access(file.c_str(), R_OK) == 0) return fault;
  return {"this user may not read it", "Make it readable: chmod a+r " + file};
}
