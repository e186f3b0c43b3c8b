#include "tools/rngctl/settings/old_settings.h"

#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/settings/precautions.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace {

std::string TargetOf(const std::string& link) {
  std::error_code noLink;
  return std::filesystem::read_symlink(link, noLink);
}

std::string ContentOf(const std::string& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

bool WriteAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = ::write(descriptor, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

OldSettings::OldSettings(const std::string& path)
    : file(path),
      entry(LookAtEntry(file)),
      facts(LookThrough(file)),
      target(TargetOf(file)),
      content(ContentOf(file)),
      lines(LinesToKeep(file)) {}

bool OldSettings::AreLinesKept() const { return LinesToKeep(file) == lines; }

std::string OldSettings::PutBack() const {
  const bool isRestored = Restore();
  const int error = errno;
  ::unlink((file + ".tmp").c_str());  // what the library or this may have left
  if (!isRestored) {
    return "The old content of " + file + " could not be restored (" + std::strerror(error) + ").";
  }
  return entry.Exists() ? file + " is as it was before." : "There is still no " + file + ".";
}

bool OldSettings::Restore() const {
  if (!entry.Exists()) return ::unlink(file.c_str()) == 0 || errno == ENOENT;
  return entry.IsLink() ? RestoreLink() : RestoreContent();
}

bool OldSettings::RestoreLink() const {
  if (TargetOf(file) == target) return true;
  const std::string temporary = file + ".tmp";
  ::unlink(temporary.c_str());
  return ::symlink(target.c_str(), temporary.c_str()) == 0 &&
         ::rename(temporary.c_str(), file.c_str()) == 0;
}

bool OldSettings::RestoreContent() const {
  const PathFacts now = LookAtEntry(file);
  if (now.IsRegular() && now.node == entry.node && ContentOf(file) == content) return true;
  if (WriteCopy()) return true;
  ::unlink(file.c_str());  // its space may be what is missing
  return WriteCopy();
}

bool OldSettings::WriteCopy() const {
  const std::string temporary = file + ".tmp";
  ::unlink(temporary.c_str());
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor copy(::open(temporary.c_str(), kFlags, S_IRUSR | S_IWUSR));
  if (copy.Get() < 0 || !WriteAll(copy.Get(), content)) return false;
  [[maybe_unused]] const int mayFail = ::fchown(copy.Get(), entry.owner, entry.group);
  return ::fchmod(copy.Get(), entry.mode & 0777U) == 0 && ::fsync(copy.Get()) == 0 &&
         ::rename(temporary.c_str(), file.c_str()) == 0;
}
