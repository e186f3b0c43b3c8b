#include "doctor_surroundings.h"

#include "child.h"
#include "host.h"
#include "library_handle.h"
#include "providers/display_probe.h"
#include "search_order.h"
#include "settings/known_path.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Fault {
  std::string reason;
  std::string mend;
};

// The probe says no more than no. What it needs, in the order in which it needs it.
Fault FindDisplayFault() {
  const LibraryHandle x11(::dlopen("libX11.so.6", RTLD_LAZY));
  if (!x11) {
    const std::string words = ::dlerror();
    const bool isAbsent = words.find("libX11.so.6: cannot open shared object file") == 0;
    return {isAbsent ? "there is no libX11.so.6" : "libX11.so.6 cannot be opened: " + words,
            "Install the X client library, on Debian the package libx11-6."};
  }
  for (const char* function : {"XOpenDisplay", "XCloseDisplay"}) {
    if (::dlsym(x11.get(), function)) continue;
    return {MapOf(x11.get())->l_name + std::string(" lacks ") + function,
            "Put the system's own X client library in the place of that file."};
  }
  const char* const display = std::getenv("DISPLAY");
  if (!display || !*display) {
    return {"DISPLAY is not set",
            "Run this in a graphical session, or set DISPLAY to the display of one."};
  }
  return {"the X server of DISPLAY=" + std::string(display) + " cannot be reached",
          "Start that server, or correct DISPLAY, and see that this user may connect to it."};
}

// What the lookup has left in the process.
std::string FindService(const std::optional<std::string>& directory) {
  const LibraryHandle library(::dlopen("libcrypt_known_path.so", RTLD_LAZY | RTLD_NOLOAD));
  if (const link_map* const map = MapOf(library.get())) return map->l_name;
  return directory == RNG_SETTINGS_DIR ? "" : "already in the process";
}

bool MayAccess(const fs::path& path, int mode) { return ::access(path.c_str(), mode) == 0; }

// In a directory with the sticky bit only the owner of a file, or of the directory, replaces it.
bool IsAnothersToReplace(const fs::path& file) {
  struct stat place = {};
  struct stat old = {};
  const uid_t user = ::geteuid();
  return ::stat(file.parent_path().c_str(), &place) == 0 && ::lstat(file.c_str(), &old) == 0 &&
         (place.st_mode & S_ISVTX) != 0 && user != 0 && user != place.st_uid && user != old.st_uid;
}

// Whether what is left of the last rewrite, if anything, is in the way of the next.
bool IsTemporaryInTheWay(const fs::path& file) {
  const fs::path temporary = file.string() + ".tmp";
  std::error_code unknown;
  return MayAccess(temporary, F_OK) &&
         (fs::is_directory(temporary, unknown) || !MayAccess(temporary, W_OK));
}

// A store makes missing directories and puts a new file in the old one's place, whose own
// permissions do not count then; only a file that cannot be read is written over.
bool CanBeStored(const fs::path& file) {
  std::error_code unknown;
  if (!file.is_absolute() || fs::is_directory(file, unknown)) return false;
  if (MayAccess(file, F_OK) && !MayAccess(file, R_OK)) return MayAccess(file, W_OK);
  if (MayAccess(file, F_OK) && (IsAnothersToReplace(file) || IsTemporaryInTheWay(file)))
    return false;
  fs::path directory = file.parent_path();
  while (!MayAccess(directory, F_OK) && directory.has_relative_path()) {
    if (fs::is_symlink(directory, unknown)) return false;  // a link to nothing cannot be made
    directory = directory.parent_path();
  }
  return fs::is_directory(directory, unknown) && MayAccess(directory, W_OK | X_OK);
}

std::string Text(const char* text) { return text ? text : ""; }

}  // namespace

void ExamineDisplay() {
  const bool isFound = ProbeXDisplay();
  const Fault fault = isFound ? Fault{} : FindDisplayFault();
  SendReport(
      {{"isFound", isFound}, {"reason", fault.reason}, {"mend", fault.mend}, {"step", "end"}});
}

void ExamineSettings() {
  const std::optional<std::string> directory = FindSettingsDirectory();
  SendReport({{"isKnown", directory.has_value()}, {"service", FindService(directory)}});
  if (!directory) return SendReport({{"step", "end"}});
  const std::string file = *directory + "/rng.ini";
  const int error = MayAccess(file, R_OK) ? 0 : errno;
  std::error_code unknown;
  std::string fault = error == 0 ? "" : std::strerror(error);
  if (error == 0 && !fs::is_regular_file(file, unknown)) fault = "it is no regular file";
  SendReport({{"file", file},
              {"exists", error != ENOENT && error != ENOTDIR},
              {"readingFault", fault},
              {"isWritable", CanBeStored(file)}});
  SendReport({{"type", Text(GetDefaultSettings()->GetType())},
              {"hardwareId", Text(GetDefaultSettings()->GetHardwareId())},
              {"step", "end"}});
}

void ExamineSearch() { SendReport({{"systemDirectories", ListSystemDirectories()}}); }

std::string RunPathOf(const std::string& library) {
  const LibraryHandle handle(::dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  const link_map* const map = MapOf(handle.get());
  const char* texts = nullptr;
  ElfW(Xword) place = 0;
  for (const ElfW(Dyn)* entry = map ? map->l_ld : nullptr; entry && entry->d_tag != DT_NULL;
       ++entry) {
    // The loader has put the address in the place of an offset.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    if (entry->d_tag == DT_STRTAB) texts = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    if (entry->d_tag == DT_RPATH || entry->d_tag == DT_RUNPATH) place = entry->d_un.d_val;
  }
  return texts && place ? texts + place : "";
}
