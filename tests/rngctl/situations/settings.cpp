#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

const std::string kFile = "etc/rng.ini";

// A device with two identifiers, and the lines of the settings file.
std::function<void()> With(const std::string& lines) {
  return [lines] {
    InstallPlugin("dsdr", "has_devices");
    WriteFile(TreePath(kFile), lines);
  };
}

std::function<void()> WithType(const std::string& type, const std::string& more = "") {
  return With("[Devices]\nRandomNumberGeneratorType=" + type + "\n" + more);
}

std::function<void()> WithDevice(const std::string& device) {
  return WithType("dsdr", "RandomNumberGeneratorHardwareID=" + device + "\n");
}

constexpr char kUsable[] = "dsdr; default usable";
constexpr char kUnusable[] = "dsdr; default unusable";
constexpr char kNone[] = "dsdr";

}  // namespace

std::vector<Situation> SettingsSituations() {
  return {
      {"NoFile", [] { InstallPlugin("dsdr", "has_devices"); }, kNone, "", {"dsdr"}},
      {"DefaultIsLoaded", WithType("dsdr"), kUsable, "", {"dsdr"}},
      {"DefaultInTheWrongCase", WithType("Dsdr"), kUnusable, "", {"dsdr"}},
      {"DefaultInQuotes", WithType("\"dsdr\""), kUnusable},
      {"DefaultWithAComment", WithType("dsdr ; the token"), kUnusable},
      {"DefaultWithAHash", WithType("dsdr # the token"), kUnusable},
      {"DefaultWithBlanks", WithType("  dsdr  "), kUsable},
      {"DefaultOfSeventeen", WithType("abcdefghijklmnopq"), kUnusable},
      {"DefaultOfEighteen", WithType("abcdefghijklmnopqr"), kUnusable},
      {"DefaultIsNotInstalled", WithType("sobol"), kUnusable, "", {"dsdr"}},
      {"DefaultIsUnknown", WithType("bio"), kUnusable},
      {"DefaultIsEmpty", WithType(""), kNone},
      {"DefaultIsUnavailable",
       [] {
         WithType("Rutoken")();
         InstallPlugin("Rutoken", "unavailable");
       },
       kUnusable},
      {"DefaultHasAnotherName",
       [] {
         WithType("sobol")();
         InstallPlugin("dsdr", "stub");
         fs::rename(TreePath("lib/librngdsdr.so"), TreePath("lib/librngbiocore.so"));
       },
       "nothing; default unusable"},
      {"DeviceIsThere", WithDevice("B2"), kUsable, "", {"dsdr"}},
      {"DeviceIsRefused", WithDevice("C3"), kUnusable, "", {"dsdr"}},
      {"DeviceInTheWrongCase", WithDevice("a1"), kUnusable},
      {"DeviceInQuotes", WithDevice("\"A1\""), kUnusable},
      {"DeviceOfEighteen", WithDevice("abcdefghijklmnopqr"), kUnusable},
      {"DeviceIsEmpty", WithDevice(""), kUsable},
      {"DeviceWithoutAKind", With("[Devices]\nRandomNumberGeneratorHardwareID=A1\n"), kNone},
      {"DeviceOfAKindThatHasNone",
       [] {
         WithDevice("A1")();
         InstallPlugin("dsdr", "stub");
       },
       kUnusable},
      {"KeyOutsideTheSection", With("RandomNumberGeneratorType=dsdr\n"), kNone},
      {"KeyInAnotherSection", With("[Other]\nRandomNumberGeneratorType=dsdr\n"), kNone},
      {"KeyMisspelt", With("[Devices]\nRandomNumberGenerator=dsdr\n"), kNone},
      {"TwoLines", WithType("dsdr", "RandomNumberGeneratorType=sobol\n"), kUsable},
      {"LinesEndAsOnWindows", With("[Devices]\r\nRandomNumberGeneratorType=dsdr\r\n"), kUsable},
      {"FileIsEmpty", With(""), kNone},
      {"FileIsADirectory",
       [] {
         InstallPlugin("dsdr", "has_devices");
         fs::create_directories(TreePath(kFile));
       },
       kNone},
      {"FileIsAFifo",
       [] {
         InstallPlugin("dsdr", "has_devices");
         fs::create_directories(TreePath("etc"));
         ::mkfifo(TreePath(kFile).c_str(), 0600);
       },
       "did not answer"},
      {"FileIsALinkToNothing",
       [] {
         InstallPlugin("dsdr", "has_devices");
         fs::create_directories(TreePath("etc"));
         fs::create_symlink(TreePath("gone"), TreePath(kFile));
       },
       kNone},
      {"FileIsALink",
       [] {
         WithType("dsdr")();
         fs::rename(TreePath(kFile), TreePath("etc/other.ini"));
         fs::create_symlink("other.ini", TreePath(kFile));
       },
       kUsable},
  };
}
