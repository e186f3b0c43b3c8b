// Whether a default can be stored: compares what the doctor says with what storing does in a host, and what
// "rngctl default set" does with both.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/permissions.h"

#include <algorithm>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <linux/fs.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <rngaggregator/aggregator.h>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;
constexpr uid_t kAnother = 12345;
constexpr char kStored[] = "RandomNumberGeneratorType=dsdr";

std::string Folder() { return TreePath("etc"); }
std::string Ini() { return TreePath(kSettingsFile); }
std::string Temporary() { return Ini() + ".tmp"; }
std::string Place(const std::string& name) { return TreePath("place/" + name); }

// Like the directories, the file belongs to whoever stores.
void WriteIni() {
  WriteFile(Ini(), "[Devices]\nRandomNumberGeneratorType=old\n");
  if (::geteuid() != 0) return;
  EXPECT_EQ(0, ::chown(Ini().c_str(), kNobody, kNobody));
}

void Link(const std::string& target, const std::string& link) { fs::create_symlink(target, link); }

bool MakeSocket(const std::string& path) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const bool isBound =
      ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(socket);
  return isBound;
}

bool MakeFifo(const std::string& path) { return ::mkfifo(path.c_str(), 0600) == 0; }

bool Give(const std::string& path, uid_t owner) {
  return ::lchown(path.c_str(), owner, owner) == 0;
}

bool Mark(const std::string& path, int flag) {
  const int file = ::open(path.c_str(), O_RDONLY);
  int flags = 0;
  const bool isRead = ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
  flags = flag == 0 ? flags & ~(FS_IMMUTABLE_FL | FS_APPEND_FL) : flags | flag;
  const bool isDone = isRead && ::ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
  ::close(file);
  return isDone;
}

void Unmark(const std::string& path) { static_cast<void>(Mark(path, 0)); }

void SetMode(const std::string& path, unsigned mode) { fs::permissions(path, fs::perms(mode)); }

// Turns etc/ into another user's directory with the permissions of /tmp.
bool MakeSticky() {
  SetMode(Folder(), 01777);
  return Give(Folder(), kAnother);
}

bool MountDisk(const std::string& options) {
  return ::mount("none", Folder().c_str(), "tmpfs", 0, options.c_str()) == 0;
}

void FillDisk() {
  const int file = ::open((Folder() + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  const std::string block(4096, 'x');
  while (::write(file, block.data(), block.size()) > 0) {
  }
  ::close(file);
}

bool ReadOnlyDisk() {
  if (!MountDisk("size=1m")) return false;
  WriteIni();
  return ::mount("none", Folder().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool MountFile() {
  WriteIni();
  WriteFile(Place("another"), "[Devices]\n");
  return ::mount(Place("another").c_str(), Ini().c_str(), nullptr, MS_BIND, nullptr) == 0;
}

struct Situation {
  const char* name;
  std::function<bool()> arrange;  ///< false: not possible here
};

// clang-format off
const std::vector<Situation> kSituations = {
    {"no file", [] { return true; }},
    {"no directory", [] { return fs::remove(Folder()); }},
    {"a file", [] { WriteIni(); return true; }},
    {"a file that is read-only", [] { WriteIni(); SetMode(Ini(), 0444); return true; }},
    {"a file that cannot be read", [] { WriteIni(); SetMode(Ini(), 0200); return true; }},
    {"a file without any permission", [] { WriteIni(); SetMode(Ini(), 0); return true; }},
    {"a read-only directory", [] { WriteIni(); SetMode(Folder(), 0555); return true; }},
    {"a directory that cannot be searched", [] { WriteIni(); SetMode(Folder(), 0666); return true; }},
    {"a read-only directory without a file", [] { SetMode(Folder(), 0555); return true; }},
    {"a writable file in a read-only directory", [] { WriteIni(); SetMode(Ini(), 0666); SetMode(Folder(), 0555); return true; }},
    {"a file in the directory's place", [] { fs::remove(Folder()); WriteFile(Folder(), ""); return true; }},
    {"a dangling link in the directory's place", [] { fs::remove(Folder()); Link(Place("gone"), Folder()); return true; }},
    {"a link loop in the directory's place", [] { fs::remove(Folder()); Link("etc", Folder()); return true; }},
    {"a link to a directory", [] { fs::remove(Folder()); Link(Place(""), Folder()); return true; }},
    {"a link to a file", [] { WriteFile(Place("ini"), "[Devices]\n"); Link(Place("ini"), Ini()); return true; }},
    {"a dangling link", [] { Link(Place("ini"), Ini()); return true; }},
    {"a link into a missing directory", [] { Link(Place("gone/ini"), Ini()); return true; }},
    {"a link into a read-only directory", [] { SetMode(Place(""), 0555); Link(Place("ini"), Ini()); return true; }},
    {"a link loop", [] { Link("rng.ini", Ini()); return true; }},
    {"a link to the empty device", [] { Link("/dev/null", Ini()); return true; }},
    {"a socket", [] { return MakeSocket(Ini()); }},
    {"a FIFO", [] { return MakeFifo(Ini()); }},
    {"a directory", [] { return fs::create_directory(Ini()); }},
    {"a temporary directory", [] { WriteIni(); return fs::create_directory(Temporary()); }},
    {"a temporary FIFO", [] { WriteIni(); return MakeFifo(Temporary()); }},
    {"a temporary FIFO without a file", [] { return MakeFifo(Temporary()); }},
    {"a temporary socket", [] { WriteIni(); return MakeSocket(Temporary()); }},
    {"a temporary file", [] { WriteIni(); WriteFile(Temporary(), "old"); return true; }},
    {"a temporary file that is read-only", [] { WriteIni(); WriteFile(Temporary(), "old"); SetMode(Temporary(), 0444); return true; }},
    {"a temporary link to a file", [] { WriteIni(); WriteFile(Place("tmp"), ""); Link(Place("tmp"), Temporary()); return true; }},
    {"a temporary dangling link", [] { WriteIni(); Link(Place("tmp"), Temporary()); return true; }},
    {"a temporary link into a missing directory", [] { WriteIni(); Link(Place("gone/tmp"), Temporary()); return true; }},
    {"a temporary link loop", [] { WriteIni(); Link("rng.ini.tmp", Temporary()); return true; }},
    {"a temporary link to the file", [] { WriteIni(); Link("rng.ini", Temporary()); return true; }},
    {"a temporary link to the empty device", [] { WriteIni(); Link("/dev/null", Temporary()); return true; }},
    {"a temporary second name of the file", [] { WriteIni(); fs::create_hard_link(Ini(), Temporary()); return true; }},
    {"another's file in a sticky directory", [] { WriteIni(); SetMode(Ini(), 0666); return MakeSticky() && Give(Ini(), 4711); }},
    {"one's own file in a sticky directory", [] { WriteIni(); return MakeSticky() && Give(Ini(), kNobody); }},
    {"another's temporary file in a sticky directory", [] { WriteIni(); WriteFile(Temporary(), ""); SetMode(Temporary(), 0666); return MakeSticky() && Give(Ini(), kNobody) && Give(Temporary(), 4711); }},
    {"another's temporary link in a sticky directory", [] { WriteIni(); Link(Place("tmp"), Temporary()); return MakeSticky() && Give(Ini(), kNobody) && Give(Temporary(), 4711); }},
    {"another's link in a sticky directory", [] { WriteFile(Place("ini"), "[Devices]\n"); Link(Place("ini"), Ini()); return MakeSticky() && Give(Ini(), 4711); }},
    {"a directory of one's group", [] { WriteIni(); SetMode(Folder(), 0775); return ::chown(Folder().c_str(), kAnother, kNobody) == 0; }},
    {"an immutable file", [] { WriteIni(); return Mark(Ini(), FS_IMMUTABLE_FL); }},
    {"an append-only file", [] { WriteIni(); return Mark(Ini(), FS_APPEND_FL); }},
    {"an immutable directory", [] { WriteIni(); return Mark(Folder(), FS_IMMUTABLE_FL); }},
    {"an append-only directory", [] { WriteIni(); return Mark(Folder(), FS_APPEND_FL); }},
    {"an append-only temporary file", [] { WriteIni(); WriteFile(Temporary(), ""); return Mark(Temporary(), FS_APPEND_FL); }},
    {"a full disk", [] { if (!MountDisk("size=64k,mode=777")) return false; WriteIni(); FillDisk(); return true; }},
    {"a full disk without a file", [] { if (!MountDisk("size=64k,mode=777")) return false; FillDisk(); return true; }},
    {"a read-only disk", ReadOnlyDisk},
    {"a mount point", MountFile},
};
// clang-format on

// The user who stores the default owns the directories.
void LayOut() {
  for (const std::string& folder : {Folder(), TreePath("place")}) {
    fs::create_directories(folder);
    if (::geteuid() != 0) continue;
    EXPECT_EQ(0, ::chown(folder.c_str(), kNobody, kNobody));
  }
}

void ClearAway() {
  ::umount2(Ini().c_str(), MNT_DETACH);
  ::umount2(Folder().c_str(), MNT_DETACH);
  std::error_code absent;
  for (const std::string& path : {Folder(), Ini(), Temporary()}) {
    if (fs::is_regular_file(path, absent) || fs::is_directory(path, absent)) Unmark(path);
  }
  for (const std::string& folder : {Folder(), TreePath("place")}) {
    if (fs::is_directory(fs::symlink_status(folder, absent))) SetMode(folder, 0755);
    fs::remove_all(folder, absent);
  }
}

bool IsStored() {
  std::error_code unknown;
  for (const std::string& path : {Folder(), Ini()}) {
    if (::geteuid() != 0) fs::permissions(path, fs::perms(0700), fs::perm_options::add, unknown);
  }
  return fs::is_regular_file(Ini(), unknown) && ReadFile(Ini()).find(kStored) != std::string::npos;
}

enum class User { kOwner, kTest };  ///< the owner of the directories, or the user of the tests

Result RunAs(User user, const std::string& command) {
  return RunForked([&] {
    std::optional<Unprivileged> unprivileged;
    if (user == User::kOwner) unprivileged.emplace();
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    return 127;
  });
}

template <typename Function>
Function* Find(void* library, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(library, name));
}

// Stores as a host does, without precautions. A signal ends it if the library hangs.
Result StoreInHost(User user) {
  return RunForked([user] {
    std::optional<Unprivileged> unprivileged;
    if (user == User::kOwner) unprivileged.emplace();
    ::alarm(3);
    void* const library = ::dlopen(TreePath("lib/librngaggregator.so.1").c_str(), RTLD_NOW);
    if (!library) return 127;
    Find<decltype(Initialize)>(
        library, "Initialize")(Find<decltype(GetDefaultSettings)>(library, "GetDefaultSettings")());
    return Find<decltype(SetDefaultRng)>(library, "SetDefaultRng")("dsdr", nullptr) ? 0 : 1;
  });
}

// The library would store in these cases.
const std::vector<std::string> kRefusedByTheTool = {
    "a dangling link",
    "a link into a read-only directory",
    "a link to the empty device",
    "a temporary link to a file",
    "a temporary dangling link",
    "a temporary second name of the file",
    "another's temporary file in a sticky directory",
    "another's temporary link in a sticky directory",
};

bool IsOneOf(const std::string& name, const std::vector<std::string>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

using State = std::map<std::string, std::string>;

State ListTree() {
  State state;
  std::error_code denied;
  for (const fs::directory_entry& entry : fs::directory_iterator(Folder(), denied)) {
    struct stat facts = {};
    if (::lstat(entry.path().c_str(), &facts) != 0) continue;  // the directory cannot be searched
    state[entry.path()] = std::to_string(facts.st_ino) + " " + std::to_string(facts.st_size) + " " +
                          std::to_string(facts.st_mtim.tv_nsec);
  }
  return state;
}

}  // namespace

class Storing : public Doctor {
 protected:
  static void TearDownTestSuite() { ClearAway(); }

  static void CompareAll(User user, void (*compare)(const Situation& situation, User user)) {
    std::string impossible;
    for (const Situation& situation : kSituations) {
      LayOut();
      if (situation.arrange()) {
        compare(situation, user);
      } else {
        impossible += std::string("\n  ") + situation.name;
      }
      ClearAway();
    }
    if (!impossible.empty()) std::cout << "Cannot be arranged here:" << impossible << '\n';
  }

  static void CompareDoctorWithHost(const Situation& situation, User user) {
    const State before = ListTree();
    const Result result = RunAs(user, Rngctl() + " doctor dsdr --json --timeout 5");
    const json report = json::parse(result.output, nullptr, false);
    EXPECT_EQ(before, ListTree()) << situation.name;
    ASSERT_TRUE(report.is_object()) << situation.name << ": " << result.errors;
    const json settings = report.at("settings");
    const Result stored = StoreInHost(user);
    // A device that cannot be stored after its kind is a failure, too.
    EXPECT_EQ(IsStored() && stored.status == 0, settings.at("writable"))
        << situation.name << ": " << settings.dump(2) << stored.errors;
    EXPECT_EQ(settings.at("writable"), settings.at("writing_fault").is_null()) << situation.name;
  }

  // The tool also refuses some cases in which the library would store to a place that nobody wants.
  static void CompareToolWithDoctor(const Situation& situation, User user) {
    const bool mayCreateDirectory = !fs::exists(fs::symlink_status(Folder()));
    const State before = ListTree();
    const Result doctor = RunAs(user, Rngctl() + " doctor dsdr --json --timeout 5");
    const json settings = json::parse(doctor.output, nullptr, false).at("settings");
    const Result stored = RunAs(user, "exec timeout -s KILL 10 " + Rngctl() + " default set dsdr");
    if (stored.status == 0) {
      EXPECT_TRUE(settings.at("writable")) << situation.name;
      EXPECT_TRUE(IsStored()) << situation.name;
      return;
    }
    EXPECT_EQ(1, stored.status) << situation.name << ": " << stored.errors;
    EXPECT_THAT(stored.errors, HasSubstr(" Nothing was changed. ")) << situation.name;
    if (!mayCreateDirectory) {
      EXPECT_EQ(before, ListTree()) << situation.name;
    }
    if (!settings.at("writable")) return;
    EXPECT_TRUE(IsOneOf(situation.name, kRefusedByTheTool)) << situation.name << stored.errors;
  }
};

TEST_F(Storing, TheDoctorForeseesWhatTheOwnerOfTheDirectoryAchieves) {
  CompareAll(User::kOwner, CompareDoctorWithHost);
}

TEST_F(Storing, TheDoctorForeseesWhatTheTestsUserAchieves) {
  CompareAll(User::kTest, CompareDoctorWithHost);
}

TEST_F(Storing, TheToolStoresOrLeavesEverythingToTheOwnerOfTheDirectory) {
  CompareAll(User::kOwner, CompareToolWithDoctor);
}

TEST_F(Storing, TheToolStoresOrLeavesEverythingToTheTestsUser) {
  CompareAll(User::kTest, CompareToolWithDoctor);
}
