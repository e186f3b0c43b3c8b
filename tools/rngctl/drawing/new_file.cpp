#include "tools/rngctl/drawing/new_file.h"

#include "tools/rngctl/channel/signal_block.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <sys/random.h>
#include <sys/stat.h>
#include <system_error>

namespace {

constexpr std::size_t kSuffixSize = 7;  // ".XXXXXX"

// What a signal handler removes.
struct Unfinished {
  int directory = -1;  // -1: there is none
  int file = -1;
  char name[NAME_MAX + 1] = {};
};
Unfinished g_unfinished[2];

[[noreturn]] void Fail(int error = errno) {
  throw std::system_error(error, std::generic_category());
}

// Empties the file first, because its name may stay: in a directory that only takes new files, or if
// somebody has moved or linked the file.
void Discard(int directory, const char* name, int file) {
  [[maybe_unused]] const int result = ::ftruncate(file, 0);
  ::unlinkat(directory, name, 0);
}

void RemoveUnfinished(int signal) {
  for (const Unfinished& unfinished : g_unfinished) {
    if (unfinished.directory < 0) continue;
    Discard(unfinished.directory, unfinished.name, unfinished.file);
  }
  // SA_RESETHAND has restored the default action.
  sigset_t raised;
  ::sigemptyset(&raised);
  ::sigaddset(&raised, signal);
  ::raise(signal);
  ::sigprocmask(SIG_UNBLOCK, &raised, nullptr);
  ::_exit(128 + signal);  // only as process 1 of a container, which no signal ends
}

bool EndsProcessByDefault(int signal) {
  switch (signal) {
    case SIGKILL:  // cannot be caught
    case SIGSTOP:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGCHLD:
    case SIGCONT:
    case SIGURG:
    case SIGWINCH:
      return false;
    default:
      return true;
  }
}

// Changes the action of signals from `from` to `to`. Ignored signals stay ignored.
void ReplaceHandlers(void (*from)(int), void (*to)(int)) {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    struct sigaction action = {};
    if (!EndsProcessByDefault(signal) || ::sigaction(signal, nullptr, &action) != 0) continue;
    if (action.sa_handler != from) continue;
    action = {};
    action.sa_handler = to;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

void RemoveWhenSignalled(int directory, const std::string& name, int file) {
  Unfinished* const unfinished =
      std::find_if(std::begin(g_unfinished), std::end(g_unfinished),
                   [](const Unfinished& place) { return place.directory < 0; });
  if (unfinished == std::end(g_unfinished)) Fail(EMFILE);
  *unfinished = {};
  unfinished->file = file;
  name.copy(unfinished->name, sizeof unfinished->name - 1);
  unfinished->directory = directory;
  ReplaceHandlers(SIG_DFL, RemoveUnfinished);
}

std::string RandomSuffix() {
  constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz234567";
  unsigned char bytes[kSuffixSize - 1];
  if (::getrandom(bytes, sizeof bytes, 0) != sizeof bytes) Fail();
  std::string suffix = ".";
  for (const unsigned char byte : bytes) suffix += kLetters[byte % 32];
  return suffix;
}

Descriptor OpenDirectory(const std::string& path) {
  Descriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A directory that may be written but not listed is enough.
  if (directory.Get() < 0 && errno == EACCES) {
    directory = Descriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  if (directory.Get() < 0) Fail();
  return directory;
}

}  // namespace

Place OpenPlace(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (name.empty() || name == "." || name == "..") Fail(EISDIR);
  if (name.size() > NAME_MAX) Fail(ENAMETOOLONG);
  return {OpenDirectory(slash == std::string::npos ? "." : path.substr(0, slash + 1)), name};
}

NewFile::NewFile(Place where) : place(std::move(where)) { Create(); }

void NewFile::Create() {
  constexpr int kAttempts = 100;
  for (int i = 0; i < kAttempts; ++i) {
    temporary = place.name.substr(0, NAME_MAX - kSuffixSize) + RandomSuffix();
    if (TryToCreate()) return;
    if (errno != EEXIST) Fail();
  }
  Fail(EEXIST);
}

// A signal between creating the file and telling the handler about it would leave the file behind.
bool NewFile::TryToCreate() {
  const SignalBlock block;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  file = Descriptor(::openat(place.directory.Get(), temporary.c_str(), kFlags, S_IRUSR | S_IWUSR));
  if (file.Get() < 0) return false;
  RemoveWhenSignalled(place.directory.Get(), temporary, file.Get());
  return true;
}

NewFile::~NewFile() {
  const SignalBlock block;
  if (!temporary.empty()) Discard(place.directory.Get(), temporary.c_str(), file.Get());
  Forget();
}

void NewFile::Commit() {
  // The umask may have cleared these bits.
  if (::fchmod(file.Get(), S_IRUSR | S_IWUSR) != 0) Fail();
  if (::fsync(file.Get()) != 0 && errno != EINVAL) Fail();
  Rename();
  SyncDirectory();
}

// A signal between the two would empty the file that has its name now.
void NewFile::Rename() {
  const SignalBlock block;
  const int directory = place.directory.Get();
  if (::renameat(directory, temporary.c_str(), directory, place.name.c_str()) != 0) Fail();
  temporary.clear();
  Forget();
}

void NewFile::SyncDirectory() const {
  if (::fsync(place.directory.Get()) == 0 || errno == EINVAL) return;
  // A directory that may not be listed cannot be synced by itself.
  if (errno != EBADF || ::syncfs(file.Get()) != 0) Fail();
}

// A signal does not remove it any more.
void NewFile::Forget() const {
  for (Unfinished& unfinished : g_unfinished) {
    if (unfinished.file == file.Get()) unfinished = {};
  }
}

void NewFile::LeaveToParent() {
  Forget();
  ReplaceHandlers(RemoveUnfinished, SIG_DFL);
  temporary.clear();
  file.Close();
  place.directory.Close();
}
