#include "tools/rngctl/settings/store_default.h"

#include "tools/rngctl/channel/signal_block.h"
#include "tools/rngctl/files/path_facts.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/directory_lock.h"
#include "tools/rngctl/settings/foreign_rights.h"
#include "tools/rngctl/settings/old_settings.h"
#include "tools/rngctl/settings/precautions.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/terminal/text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

constexpr char kRetry[] = "Fix that, and try again.";

class Umask {
 public:
  explicit Umask(mode_t mask) : before(::umask(mask)) {}
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;
  ~Umask() { ::umask(before); }

 private:
  const mode_t before;
};

std::string Text(const char* text) { return text ? text : ""; }

// The umask that gives the new file the mode of the old one, without bits that a settings file should
// not have. Its owner must be able to read it back.
mode_t MaskFor(const PathFacts& old) {
  constexpr mode_t kOthersMayNotWrite = 022;
  return kOthersMayNotWrite | (old.IsRegular() ? ~old.mode & 0266U : 0U);
}

// If the directory has a default access control list, that replaces the umask.
void RemoveRights(const std::string& file, mode_t rights) {
  const mode_t mode = LookAtEntry(file).mode & 0777U;
  if ((mode & rights) == 0) return;
  if (::fchmodat(AT_FDCWD, file.c_str(), mode & ~rights, AT_SYMLINK_NOFOLLOW) == 0) return;
  std::cerr << Printable("Warning: other users may read or write " + file +
                         " more than intended, and its mode cannot be changed (" +
                         std::strerror(errno) + ").")
            << '\n';
}

void CreateDirectory(const std::string& file) {
  const std::string directory = DirectoryOf(file);
  if (LookThrough(directory).IsDirectory() && file.starts_with('/')) return;
  std::error_code failure;
  CheckStorable(file);
  std::filesystem::create_directories(directory, failure);
  if (!failure) return;
  RefuseToStore(file, directory + " cannot be created (" + failure.message() + ")", kRetry);
}

void CheckLock(const DirectoryLock& lock, const std::string& file) {
  if (lock.Error() == 0) return;
  const std::string directory = DirectoryOf(file);
  if (lock.Error() == EWOULDBLOCK) {
    RefuseToStore(file, "another process has kept " + directory + " locked for five seconds",
                  "Try again when it has finished.");
  }
  const std::string fix = lock.Error() == EACCES ? HowToGetAccess(directory) : kRetry;
  RefuseToStore(file, directory + " cannot be locked (" + std::strerror(lock.Error()) + ")", fix);
}

bool LetLibraryStore(const Default& chosen) {
  IRngSettings& settings = *GetDefaultSettings();
  const char* const device = chosen.device.empty() ? nullptr : chosen.device.c_str();
  return settings.SetType(chosen.kind.c_str()) && settings.SetHardwareId(device);
}

// The library does not notice every failure to write. Reading the file back does.
void StoreAndReadBack(const Default& chosen, const OldSettings& old) {
  errno = 0;
  const bool isStored = LetLibraryStore(chosen);
  const int error = isStored ? 0 : errno;
  const Default found = ReadConfiguredDefault();
  if (!isStored || found != chosen) {
    RefuseAfterStoring(old.File(), "it reads back as " + Quoted(Describe(found)), error);
  }
  if (!old.AreLinesKept()) RefuseAfterStoring(old.File(), "other settings were lost", 0);
}

// The known-path service, which the library asks several times, may end the process at any moment.
void StoreOrPutBack(const Default& chosen, const OldSettings& old) {
  try {
    AnswerOfFork(kService, [&] {
      StoreAndReadBack(chosen, old);
      return std::string();
    });
  } catch (const Refusal& refusal) {
    const std::string result = old.PutBack();
    WarnOfNewOwner(old.File(), old.Facts());
    throw Refusal(refusal.status, std::string(refusal.what()) + " " + result, refusal.advice);
  }
}

}  // namespace

std::string Describe(const Default& chosen) {
  return (chosen.kind.empty() ? "none" : chosen.kind) +
         (chosen.device.empty() ? "" : ", device " + chosen.device);
}

Default ReadConfiguredDefault() {
  IRngSettings& settings = *GetDefaultSettings();
  const std::string kind = Text(settings.GetType());
  return {kind, Text(settings.GetHardwareId())};
}

void StoreDefault(const Default& chosen) {
  RefuseForeignRights();
  const std::string file = FindSettingsFile();
  if (file.empty()) {
    throw Refusal(kNegativeAnswer,
                  "The default could not be stored: the known-path service returns no directory.");
  }
  const Umask umaskOfDirectories(022);
  CreateDirectory(file);
  const DirectoryLock lock(DirectoryOf(file), DirectoryLock::Kind::kExclusive);
  CheckLock(lock, file);
  FinishInterruptedStore(file);
  CheckLinks(file);
  CheckStorable(file);
  WarnOfLosses(file);
  ::unlink((file + ".tmp").c_str());  // this user's own; the new file would inherit its mode
  const OldSettings old(file);
  const mode_t mask = MaskFor(old.Facts());
  const Umask umaskOfFile(mask);
  // No signal may come before the file is complete or the old one back. SIGXFSZ must end the process that
  // writes: if it did not, the library would go on with what it could write.
  const SignalBlock block{SIGXFSZ};
  StoreOrPutBack(chosen, old);
  RemoveRights(file, mask);
  WarnOfNewOwner(file, old.Facts());
}
