#include "tools/rngctl/doctor/causes/unavailable.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace fs = std::filesystem;

namespace {

std::string FixDataFile(const std::string& file) {
  if (::access(file.c_str(), R_OK) != 0) {
    const int error = errno;
    return (error == ENOENT || error == ENOTDIR ? "Install its data file: there is no " + file + "."
                                                : "Make its data file readable for this user: " +
                                                      file + ": " + std::strerror(error) + ".");
  }
  std::error_code unknown;
  if (!fs::is_regular_file(file, unknown)) return "Replace " + file + ": it is not a data file.";
  if (fs::file_size(file, unknown) == 0) return "Replace its data file " + file + ": it is empty.";
  return "Check its data file " + file + ": it may be damaged, or all of its data used up.";
}

}  // namespace

std::string FixUnavailable(const ProviderCatalogueEntry& row, const std::string& dataFile) {
  if (!dataFile.empty()) return FixDataFile(dataFile);
  if (row.needsDisplay) {
    return "It asks the user in a window: run the program in a graphical session of this user, "
           "and make sure that the programs and libraries that draw the window are installed.";
  }
  if (row.name == rngBioKb) {
    return "It asks the user to type: run the program in a terminal, with standard input, and "
           "make sure that the program that asks is installed.";
  }
  if (row.name == rngUnixDev) {
    return "It reads the system's own generator: make sure that no sandbox or container blocks "
           "getrandom or /dev/urandom.";
  }
  return "Connect the device, and make sure that its driver is running, that its licence is valid, "
         "and that this user may use it.";
}
