#include "providers/display_probe.h"
#include "providers/library_handle.h"
#include "settings/known_path.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/loader/search_order.h"
#include "tools/rngctl/process/child.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace fs = std::filesystem;

namespace {

struct Fault {
  std::string reason;
  std::string fix;
};

// The probe does not say why it fails. This checks what it needs, in the same order.
Fault FindDisplayFault() {
  const LibraryHandle x11(::dlopen("libX11.so.6", RTLD_LAZY));
  if (!x11) {
    const LoaderError error = ParseLoaderError(::dlerror());
    const bool isAbsent = error.missingFile == "libX11.so.6";
    return {
        isAbsent ? "libX11.so.6 is not installed" : "libX11.so.6 cannot be opened: " + error.words,
        "Install the X client library (on Debian, the package libx11-6)."};
  }
  for (const char* function : {"XOpenDisplay", "XCloseDisplay"}) {
    if (::dlsym(x11.get(), function)) continue;
    return {MapOf(x11.get())->l_name + std::string(" lacks ") + function,
            "Replace that file with the system's X client library."};
  }
  const char* const display = std::getenv("DISPLAY");
  if (!display || !*display) {
    return {"DISPLAY is not set",
            "Run this in a graphical session, or set DISPLAY to an X server."};
  }
  return {"the X server of DISPLAY=" + std::string(display) + " cannot be reached",
          "Start that server or correct DISPLAY, and make sure that this user may connect to it."};
}

// The file of the service that the lookup has just used, which remains loaded afterwards.
std::string FindService(const std::optional<std::string>& directory) {
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NOLOAD));
  if (const link_map* const map = MapOf(library.get())) return map->l_name;
  return directory == RNG_SETTINGS_DIR ? "" : "a library that was already in the process";
}

bool MayAccess(const fs::path& path, int mode) { return ::access(path.c_str(), mode) == 0; }

// In a directory with the sticky bit, only the owner of a file or of the directory may replace the
// file.
bool IsAnothersToReplace(const fs::path& file) {
  struct stat place = {};
  struct stat old = {};
  const uid_t user = ::geteuid();
  return ::stat(file.parent_path().c_str(), &place) == 0 && ::lstat(file.c_str(), &old) == 0 &&
         (place.st_mode & S_ISVTX) != 0 && user != 0 && user != place.st_uid && user != old.st_uid;
}

// Whether a temporary file left by an earlier rewrite would make the next one fail.
bool IsTemporaryInTheWay(const fs::path& file) {
  const fs::path temporary = file.string() + ".tmp";
  std::error_code unknown;
  return MayAccess(temporary, F_OK) &&
         (fs::is_directory(temporary, unknown) || !MayAccess(temporary, W_OK));
}

// Storing a default creates missing directories and replaces the file, so the permissions of the old
// file do not matter. Only a file that cannot be read is overwritten in place.
bool CanBeStored(const fs::path& file) {
  std::error_code unknown;
  if (!file.is_absolute() || fs::is_directory(file, unknown)) return false;
  if (MayAccess(file, F_OK) && !MayAccess(file, R_OK)) return MayAccess(file, W_OK);
  if (MayAccess(file, F_OK) && (IsAnothersToReplace(file) || IsTemporaryInTheWay(file)))
    return false;
  fs::path directory = file.parent_path();
  while (!MayAccess(directory, F_OK) && directory.has_relative_path()) {
    if (fs::is_symlink(directory, unknown)) return false;  // nothing can be created there
    directory = directory.parent_path();
  }
  return fs::is_directory(directory, unknown) && MayAccess(directory, W_OK | X_OK);
}

std::string WhyNotReadable(const fs::path& file) {
  if (!MayAccess(file, R_OK)) return std::strerror(errno);
  std::error_code unknown;
  return fs::is_regular_file(file, unknown) ? "" : "it is not a regular file";
}

// True also when this user may not look whether it exists.
bool MayExist(const fs::path& file) {
  return MayAccess(file, R_OK) || (errno != ENOENT && errno != ENOTDIR);
}

std::string Text(const char* text) { return text ? text : ""; }

void ExamineFile(SettingsAnswer& answer) {
  answer.exists = MayExist(answer.file);
  answer.readingFault = WhyNotReadable(answer.file);
  answer.isWritable = CanBeStored(answer.file);
  Send(answer);
  answer.type = Text(GetDefaultSettings()->GetType());
  answer.hardwareId = Text(GetDefaultSettings()->GetHardwareId());
}

}  // namespace

void ExamineSearch(const std::string& given) { Send(SearchAnswer{ListSystemDirectories(given)}); }

void ExamineDisplay() {
  DisplayAnswer answer;
  Send(answer);
  answer.isFound = ProbeXDisplay();
  const Fault fault = answer.isFound ? Fault{} : FindDisplayFault();
  answer.reason = fault.reason;
  answer.fix = fault.fix;
  answer.isDone = true;
  Send(answer);
}

void ExamineSettings() {
  SettingsAnswer answer;
  Send(answer);
  const std::optional<std::string> directory = FindSettingsDirectory();
  answer.isKnown = directory.has_value();
  answer.service = FindService(directory);
  if (directory) {
    answer.file = *directory + "/rng.ini";
    ExamineFile(answer);
  }
  answer.isDone = true;
  Send(answer);
}
