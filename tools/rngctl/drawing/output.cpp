#include "tools/rngctl/drawing/output.h"

#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>

namespace {

// The descriptor that a path such as /dev/stdout means.
std::optional<int> DescriptorOf(const std::string& path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!path.starts_with(folder)) continue;
    int number = -1;
    const char* const end = path.data() + path.size();
    const auto result = std::from_chars(path.data() + folder.size(), end, number);
    if (result.ec == std::errc() && result.ptr == end && number >= 0) return number;
  }
  return std::nullopt;
}

// False for descriptors that the program has opened itself, such as that of an unfinished file. Unlike inherited
// ones, they are closed on exec.
bool IsWritable(int descriptor) {
  if ((::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0) return false;
  const int flags = ::fcntl(descriptor, F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && (flags & O_PATH) == 0;
}

// Everybody may write to these, and nobody can read what was written.
bool IsNullOrFull(const struct stat& file) {
  return S_ISCHR(file.st_mode) &&
         (file.st_rdev == ::makedev(1, 3) || file.st_rdev == ::makedev(1, 7));
}

std::string TargetOf(const Place& place) {
  char target[PATH_MAX];
  const ssize_t size =
      ::readlinkat(place.directory.Get(), place.name.c_str(), target, sizeof target);
  return {target, size < 0 ? 0 : static_cast<std::size_t>(size)};
}

bool IsSame(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool AreSame(const Place& one, const Place& other) {
  struct stat ours = {};
  struct stat theirs = {};
  return one.name == other.name && ::fstat(one.directory.Get(), &ours) == 0 &&
         ::fstat(other.directory.Get(), &theirs) == 0 && IsSame(ours, theirs);
}

}  // namespace

Output::Output(const std::string& path, OthersFile othersFile)
    : name(path), ofOthers(othersFile), descriptor(STDOUT_FILENO) {
  if (name.empty()) return;
  try {
    Open();
  } catch (const std::system_error& error) {
    RefuseWith(error.code().value());
  }
}

void Output::Open() {
  if (const std::optional<int> number = DescriptorOf(name)) {
    if (!IsWritable(*number)) RefuseWith(EBADF);
    descriptor = *number;
    return;
  }
  Place place = OpenPlace(name);
  const struct stat found = Look(place);
  if (found.st_mode != 0 && !S_ISREG(found.st_mode)) return OpenSpecialFile(place, found);
  CheckOwner(found);
  descriptor = file.emplace(std::move(place)).Get();
}

// What has the name now; all zero if nothing does.
struct stat Output::Look(const Place& place) const {
  struct stat found = {};
  const int result =
      ::fstatat(place.directory.Get(), place.name.c_str(), &found, AT_SYMLINK_NOFOLLOW);
  if (result != 0 && errno != ENOENT) RefuseWith(errno);
  if (S_ISLNK(found.st_mode)) {
    Refuse("it is a link to " + Quoted(TargetOf(place)) + "; name the target itself");
  }
  if (S_ISDIR(found.st_mode)) RefuseWith(EISDIR);
  return found;
}

void Output::CheckOwner(const struct stat& found) const {
  if (found.st_mode == 0 || found.st_uid == ::geteuid()) return;
  if (ofOthers == OthersFile::kReplaced) return;
  Refuse("it belongs to another user (UID " + std::to_string(found.st_uid) + ")" +
         (ofOthers == OthersFile::kRefusedUnlessForced ? "; use --force to replace it" : ""));
}

void Output::OpenSpecialFile(const Place& place, const struct stat& found) {
  if (found.st_uid != ::geteuid() && !IsNullOrFull(found)) {
    Refuse("it is not a regular file and belongs to another user (UID " +
           std::to_string(found.st_uid) + "), who could read the bytes");
  }
  special = Descriptor(::openat(place.directory.Get(), place.name.c_str(),
                                O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW));
  struct stat opened = {};
  if (special.Get() < 0 || ::fstat(special.Get(), &opened) != 0) RefuseWith(errno);
  if (!IsSame(found, opened)) Refuse("another file has just taken its place");
  descriptor = special.Get();
}

bool Output::IsTerminal() const { return ::isatty(descriptor) == 1; }

bool Output::IsStandardOutput() const { return descriptor == STDOUT_FILENO; }

bool Output::IsSameAs(const Output& other) const {
  if (file && other.file) return AreSame(file->Where(), other.file->Where());
  if (!file && !other.file && descriptor == other.descriptor) return true;
  const struct stat target = Target();
  // One terminal or device may show both.
  return target.st_mode != 0 && !S_ISCHR(target.st_mode) && IsSame(target, other.Target());
}

// What is replaced or written to; all zero if it is only created at the end.
struct stat Output::Target() const {
  if (file) return Look(file->Where());
  struct stat found = {};
  if (::fstat(descriptor, &found) != 0) return {};
  return found;
}

bool Output::MayBeShown() const {
  struct stat status = {};
  const bool isKnown = ::fstat(descriptor, &status) == 0;
  return !isKnown || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || IsTerminal();
}

void Output::Write(const SecretBytes& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    // Checked before each write: a write that a signal interrupts after some of the bytes reports success.
    if (InterruptionWatch::Signal() != 0) throw Interrupted{InterruptionWatch::Signal(), {}};
    const ssize_t count = ::write(descriptor, bytes.data() + done, bytes.size() - done);
    if (count >= 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      RefuseWith(errno);
    }
  }
}

void Output::Commit() {
  try {
    if (!file) return;
    CheckOwner(Look(file->Where()));  // somebody may have put it there during the draw
    file->Commit();
  } catch (const std::system_error& error) {
    RefuseWith(error.code().value());
  }
}

void Output::LeaveToParent() {
  if (file) file->LeaveToParent();
  special.Close();
}

void Output::Refuse(const std::string& reason) const {
  const std::string where = name.empty() ? "standard output" : Quoted(name);
  throw Refusal(kNegativeAnswer, "Cannot write to " + where + ": " + reason + ".");
}

void Output::RefuseWith(int error) const { Refuse(std::strerror(error)); }
