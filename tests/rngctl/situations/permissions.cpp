#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr char kAllAsUsual[] = "dsdr unixdev; default usable";
const std::string kPlugin = "lib/librngdsdr.so";
const std::string kSettings = "etc/rng.ini";

void Install() {
  fs::permissions(TreePath(""), fs::perms(0755));
  fs::permissions(TreePath("lib"), fs::perms(0755));
  InstallPlugin("dsdr", "stub");
  InstallPlugin("unixdev", "stub");
  WriteFile(TreePath(kSettings), "[Devices]\nRandomNumberGeneratorType=dsdr\n");
}

std::function<void()> WithMode(const std::string& path, unsigned mode) {
  return [path, mode] {
    Install();
    fs::permissions(TreePath(path), fs::perms(mode));
  };
}

// Moves a file away, and leaves a link or a second name in its place.
std::function<void()> Moved(const std::string& path, bool isLink, unsigned modeOfPlace) {
  return [path, isLink, modeOfPlace] {
    Install();
    const fs::path place = TreePath("elsewhere");
    fs::create_directory(place);
    const fs::path target = place / fs::path(path).filename();
    fs::rename(TreePath(path), target);
    isLink ? fs::create_symlink(target, TreePath(path))
           : fs::create_hard_link(target, TreePath(path));
    fs::permissions(place, fs::perms(modeOfPlace));
  };
}

Situation Exposed(const std::string& name, const std::function<void()>& arrange,
                  const std::string& path) {
  Situation situation{name, arrange, kAllAsUsual, "", {"dsdr"}};
  situation.exposed = path;
  return situation;
}

}  // namespace

std::vector<Situation> PermissionSituations() {
  return {
      Situation{"NobodyElseMayWrite", Install, kAllAsUsual, "", {"dsdr"}},
      Exposed("AllMayWriteThePlugin", WithMode(kPlugin, 0666), kPlugin),
      Exposed("AllMayWriteTheLibrarysDirectory", WithMode("lib", 0777), "lib"),
      Exposed("AllMayWriteTheSettings", WithMode(kSettings, 0666), kSettings),
      Exposed("AllMayWriteTheSettingsDirectory", WithMode("etc", 0777), "etc"),
      Exposed("AllMayAddToTheSettingsDirectory", WithMode("etc", 01777), "etc/rng.ini.tmp"),
      Exposed("AllMayWriteTheKnownPathService", WithMode("lib/libcrypt_known_path.so", 0666),
              "lib/libcrypt_known_path.so"),
      Exposed("ThePluginIsALink", Moved(kPlugin, true, 0755), kPlugin),
      Exposed("ThePluginIsALinkToWhereAllMayWrite", Moved(kPlugin, true, 0777), "elsewhere"),
      Exposed("ThePluginHasAnotherName", Moved(kPlugin, false, 0755), kPlugin),
      Exposed("TheSettingsAreALink", Moved(kSettings, true, 0755), kSettings),
      Exposed("TheSettingsHaveAnotherName", Moved(kSettings, false, 0755), kSettings),
      Exposed(
          "ATemporaryFileIsPlanted",
          [] {
            Install();
            fs::create_symlink(TreePath("victim"), TreePath("etc/rng.ini.tmp"));
          },
          "etc/rng.ini.tmp"),
  };
}
