#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

void InstallStub() { InstallPlugin("dsdr", "stub"); }

std::function<void()> WithX11(const std::string& variant) {
  return [variant] {
    InstallX11(variant);
    InstallPlugin("bioqt", "stub");
    InstallStub();
  };
}

std::function<void()> WithKnownPath(const std::string& variant) {
  return [variant] {
    InstallStub();
    InstallKnownPath(variant);
  };
}

}  // namespace

std::vector<Situation> SurroundingSituations() {
  return {
      {"ADisplay", WithX11("whole"), "bioqt dsdr", "", {"bioqt", "dsdr"}},
      {"NoDisplay", WithX11("refusing"), "dsdr", "", {"bioqt", "dsdr"}},
      {"DisplayLibraryWithoutOpen", WithX11("no_open"), "dsdr", "", {"bioqt"}},
      {"DisplayLibraryWithoutClose", WithX11("no_close"), "dsdr", "", {"bioqt"}},
      {"DisplayLibraryIsNone", WithX11("absent"), "dsdr", "", {"bioqt"}},
      {"DisplayLibraryCrashes",
       WithX11("crashing"),
       "crashed with signal 6",
       "",
       {"bioqt", "dsdr"}},
      {"DisplayLibraryHangs", WithX11("hanging"), "did not answer", "", {"dsdr"}},
      {"DisplayLibraryEndsTheProcess", WithX11("exiting"), "exited with status 4", "", {"dsdr"}},
      {"KnownPathWithoutFunction", WithKnownPath("no_function"), "dsdr"},
      {"KnownPathIsNone", WithKnownPath("absent"), "dsdr"},
      {"KnownPathCrashes", WithKnownPath("crashing"), "crashed with signal 6"},
      {"KnownPathHangs", WithKnownPath("hanging"), "did not answer"},
      {"KnownPathEndsTheProcess", WithKnownPath("exiting"), "exited with status 0"},
      {"SixteenDescriptors", InstallStub, "dsdr", "sh -c 'ulimit -n 16; exec \"$@\"' sh", {"dsdr"}},
      {"StandardInputClosed", InstallStub, "dsdr", "sh -c 'exec \"$@\" <&-' sh", {"dsdr"}},
      {"ErrorsClosed", InstallStub, "dsdr", "sh -c 'exec \"$@\" 2>&-' sh", {"dsdr"}},
      {"ChildrenIgnored", InstallStub, "dsdr", "env --ignore-signal=CHLD", {"dsdr"}},
      {"PipesIgnored", InstallStub, "dsdr", "sh -c 'trap \"\" PIPE; exec \"$@\"' sh", {"dsdr"}},
      {"BindsAtOnce", InstallStub, "dsdr", "LD_BIND_NOW=1", {"dsdr"}},
      {"BindsAtOnceAndMissesAFunction",
       [] { InstallPlugin("unixdev", "unresolved_function"); },
       "nothing",
       "LD_BIND_NOW=1",
       {"unixdev"}},
      {"AnotherLocale", InstallStub, "dsdr", "LC_ALL=C.UTF-8 LANG=xx_YY", {"dsdr"}},
      {"NoEnvironment", InstallStub, "dsdr", "-u HOME -u PATH -u LANG", {"dsdr"}},
      {"LibraryPathWithOddEntries",
       InstallStub,
       "dsdr",
       "LD_LIBRARY_PATH=':;/nowhere:$ORIGIN/x'",
       {"dsdr"}},
      {"NoWorkingDirectory",
       InstallStub,
       "dsdr",
       "sh -c 'mkdir gone; cd gone; rmdir ../gone; exec \"$@\"' sh",
       {"dsdr"}},
      {"RootAsWorkingDirectory", InstallStub, "dsdr", "-C /", {"dsdr"}},
      {"ASessionOfItsOwn", InstallStub, "dsdr", "setsid -w", {"dsdr"}},
      {"HangUpIgnored", InstallStub, "dsdr", "nohup", {"dsdr"}},
      {"SmallStack", InstallStub, "dsdr", "sh -c 'ulimit -s 256; exec \"$@\"' sh", {"dsdr"}},
      {"FileSizeSignalIgnored",
       InstallStub,
       "dsdr",
       "sh -c 'trap \"\" XFSZ; exec \"$@\"' sh",
       {"dsdr"}},
      {"LoaderTellsWhatItDoes", InstallStub, "dsdr", "LD_DEBUG=libs", {"dsdr"}},
      {"RelativeLibraryPath",
       [] {
         InstallStub();
         fs::create_directory(TreePath("other"));
         fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
       },
       "dsdr",
       "-C " + TreePath("") + " LD_LIBRARY_PATH=other",
       {"dsdr"}},
      {"PreloadThatIsMissing", InstallStub, "dsdr", "LD_PRELOAD=/nowhere/lib.so", {"dsdr"}},
  };
}
