#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Permission bits apply to this user even where the tests run as root.
std::string AsNobody() {
  return ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups" : "";
}

void Narrow(const std::string& path, unsigned mode) {
  fs::permissions(TreePath(path), fs::perms(mode));
}

void InstallForAll() {
  Narrow("", 0755);
  InstallPlugin("dsdr", "has_devices");
  InstallPlugin("unixdev", "stub");
}

std::function<void()> WithMode(const std::string& path, unsigned mode) {
  return [path, mode] {
    InstallForAll();
    WriteFile(TreePath("etc/rng.ini"), "[Devices]\nRandomNumberGeneratorType=dsdr\n");
    Narrow(path, mode);
  };
}

}  // namespace

std::vector<Situation> UserSituations() {
  const std::string user = AsNobody();
  return {
      {"AllIsReadable",
       WithMode("etc/rng.ini", 0644),
       "dsdr unixdev; default usable",
       user,
       {"dsdr"}},
      {"PluginIsNotReadable",
       WithMode("lib/librngdsdr.so", 0),
       "unixdev; default unusable",
       user,
       {"dsdr", "unixdev"}},
      {"PluginIsNotExecutable",
       WithMode("lib/librngdsdr.so", 0444),
       "dsdr unixdev; default usable",
       user,
       {"dsdr"}},
      {"SettingsAreNotReadable", WithMode("etc/rng.ini", 0), "dsdr unixdev", user, {"dsdr"}},
      {"SettingsAreNotSearchable", WithMode("etc", 0), "dsdr unixdev", user, {"dsdr"}},
      {"DisplayLibraryIsNotReadable",
       WithMode("lib/libX11.so.6", 0),
       "dsdr unixdev; default usable",
       user,
       {"dsdr"}},
      {"KnownPathIsNotReadable",
       WithMode("lib/libcrypt_known_path.so", 0),
       "dsdr unixdev",
       user,
       {"dsdr"}},
      {"DirectoryOfThePluginIsNotSearchable",
       [] {
         InstallForAll();
         fs::create_directory(TreePath("other"));
         fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
         Narrow("other", 0);
       },
       "unixdev",
       "LD_LIBRARY_PATH=" + TreePath("other") + " " + user,
       {"dsdr", "unixdev"}},
      {"PluginInADirectoryThatCannotBeListed",
       [] {
         InstallForAll();
         fs::create_directory(TreePath("other"));
         fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
         Narrow("other", 0711);
       },
       "dsdr unixdev",
       "LD_LIBRARY_PATH=" + TreePath("other") + " " + user,
       {"dsdr"}},
  };
}
