#include "tools/rngctl/settings/settings_file.h"

#include "settings/known_path.h"
#include "tools/rngctl/files/path_facts.h"
#include "tools/rngctl/files/users.h"
#include "tools/rngctl/process/descriptor.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"

#include <cerrno>
#include <cstring>
#include <cxxabi.h>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t kMostMebibytes = 16;

[[noreturn]] void ServiceFailed(const std::string& how) {
  throw Refusal(kNegativeAnswer, "The known-path service failed" + how + ".", kService.advice);
}

std::string AskService() {
  try {
    const std::optional<std::string> directory = FindSettingsDirectory();
    return directory ? *directory + "/rng.ini" : "";
  } catch (const std::exception& error) {
    ServiceFailed(std::string(": ") + error.what());
  } catch (const abi::__forced_unwind&) {
    throw;  // the service called pthread_exit
  } catch (...) {
    ServiceFailed(" without an error message");
  }
}

std::string Octal(mode_t mode) {
  char text[8];
  std::snprintf(text, sizeof text, "%04o", mode & 07777U);
  return text;
}

ReadingFault ExplainDenial(const std::string& file) {
  const std::string closed = FindUnsearchable(file);
  const PathFacts facts = LookThrough(closed.empty() ? file : closed);
  const std::string what = (closed.empty() ? file : closed) + " has mode " + Octal(facts.mode) +
                           " and belongs to " + FindUsers().NameOfUser(facts.owner);
  const std::string fix =
      closed.empty()
          ? "Make it readable for the users of the library: chmod a+r " + file
          : "Make " + closed + " searchable for the users of the library: chmod a+x " + closed;
  return {std::string(std::strerror(EACCES)) + (facts.Exists() ? ": " + what : ""), fix};
}

ReadingFault ExplainError(const std::string& file, int error) {
  if (error == EACCES) return ExplainDenial(file);
  if (error == ENOENT && LookAtEntry(file).IsLink()) {
    return {"it is a dangling symbolic link",
            "Create the file that it leads to, or remove it: rm " + file};
  }
  const std::string advice = HowToOpenMore(error);
  return {std::strerror(error),
          advice.empty() ? "Replace it with a regular file, or remove it." : advice};
}

// Returns the errno, EFBIG if the end does not come.
int ReadToEnd(const std::string& file) {
  const Descriptor open(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (open.Get() < 0) return errno;
  std::vector<char> mebibyte(1U << 20U);
  ssize_t count = 1;
  std::size_t total = 0;
  while (count > 0 && total <= kMostMebibytes * mebibyte.size()) {
    count = ::read(open.Get(), mebibyte.data(), mebibyte.size());
    if (count > 0) total += static_cast<std::size_t>(count);
  }
  if (count > 0) return EFBIG;
  return count < 0 ? errno : 0;
}

}  // namespace

std::string FindSettingsFile() { return AnswerOfFork(kService, AskService); }

bool MayExist(const std::string& file) {
  const int error = LookAtEntry(file).error;
  return error != ENOENT && error != ENOTDIR;
}

ReadingFault FindReadingFault(const std::string& file) {
  if (!MayAccess(file, R_OK)) return ExplainError(file, errno);
  const PathFacts facts = LookThrough(file);
  if (facts.IsDirectory()) {
    return {"it is a directory",
            "Rename or remove the directory " + file + ": the library expects a file there."};
  }
  if (!facts.IsRegular()) {
    return {"it is " + KindOfFile(facts), "Replace it with a regular file, or remove it."};
  }
  const int error = ReadToEnd(file);
  if (error == EFBIG || error == EAGAIN) {
    return {"it does not end within " + std::to_string(kMostMebibytes) + " MiB",
            "Replace it with a settings file, or remove it."};
  }
  return error == 0 ? ReadingFault{} : ExplainError(file, error);
}

void RequireReadable(const std::string& file) {
  if (file.empty() || !MayExist(file)) return;
  const ReadingFault fault = FindReadingFault(file);
  if (fault.problem.empty()) return;
  throw Refusal(kNegativeAnswer, "It is unknown which default is configured: " + file +
                                     " cannot be read (" + fault.problem + "). " + fault.fix);
}

std::string FindReadableSettings() {
  std::string file = FindSettingsFile();
  RequireReadable(file);
  return file;
}

DirectoryLock LockForReading(const std::string& file) {
  return {DirectoryOf(file), DirectoryLock::Kind::kShared};
}
