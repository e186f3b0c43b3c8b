#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

void InstallStub() { InstallPlugin("dsdr", "stub"); }

std::string InShell(const std::string& commands) {
  return "sh -c '" + commands + "; exec \"$@\"' sh";
}

Situation Plain(const std::string& name, const std::string& environment) {
  return {name, InstallStub, "dsdr", environment, {"dsdr"}};
}

// Below nine the doctor cannot start its processes, and says so.
std::vector<Situation> DescriptorLimits() {
  std::vector<Situation> situations;
  for (const char* limit : {"8", "9", "10", "11", "13"}) {
    const bool isTooLow = std::string(limit) == "8";
    situations.push_back({"Descriptors" + std::string(limit),
                          InstallStub,
                          "dsdr",
                          InShell("ulimit -n " + std::string(limit)),
                          {"dsdr"},
                          "",
                          isTooLow ? "the doctor needs more descriptors than a host" : ""});
  }
  return situations;
}

std::string ManyEntries() {
  std::string path = "LD_LIBRARY_PATH=";
  for (int i = 0; i < 500; ++i) path += "/nowhere/" + std::to_string(i) + ":";
  return path + TreePath("other");
}

void InstallElsewhere() {
  InstallStub();
  fs::create_directory(TreePath("other"));
  fs::rename(TreePath("lib/librngdsdr.so"), TreePath("other/librngdsdr.so"));
}

}  // namespace

std::vector<Situation> LimitSituations() {
  std::vector<Situation> situations = {
      Plain("InputAndErrorsClosed", "sh -c 'exec \"$@\" <&- 2>&-' sh"),
      Plain("MemoryOf100MB", InShell("ulimit -v 100000")),
      Plain("DataOf1MB", InShell("ulimit -d 1000")),
      Plain("AllSignalsBlocked", "--block-signal"),
      Plain("AllSignalsIgnored", "--ignore-signal"),
      Plain("ChildrenBlocked", "--block-signal=CHLD"),
      Plain("NoRandomAddresses", "setarch -R"),
      Plain("NoNewPrivileges", "setpriv --no-new-privs"),
      Plain("NoCapabilities", "setpriv --bounding-set -all --inh-caps -all"),
      Plain("OwnNetwork", "unshare -n"),
      Plain("OwnUsers", "unshare -U"),
      Plain("OwnUsersAsRoot", "unshare -r"),
      Plain("OwnProcesses", "unshare -p -f"),
      Plain("OwnProcessesAndProc", "unshare -p -f --mount-proc"),
      Plain("AuditThatIsMissing", "LD_AUDIT=/nowhere/audit.so"),
      Plain("BindsNothing", "LD_BIND_NOT=1"),
      Plain("Tunables", "GLIBC_TUNABLES=glibc.malloc.perturb=85:glibc.malloc.tcache_count=0"),
      Plain("NoProcessorDirectories", "GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2_Usable"),
      Plain("DynamicWeak", "LD_DYNAMIC_WEAK=1"),
      Plain("LoaderTellsEverything", "LD_DEBUG=all"),
      Plain("PreloadsTheLibrary", "LD_PRELOAD=" + TreePath("lib/librngaggregator.so.1")),
      Plain("PreloadsDisplay", "LD_PRELOAD=" + TreePath("lib/libX11.so.6")),
      Plain("PreloadsKnownPath", "LD_PRELOAD=" + TreePath("lib/libcrypt_known_path.so")),
      Plain("PreloadsByName", "LD_PRELOAD=librngdsdr.so LD_LIBRARY_PATH=" + TreePath("lib")),
      Plain("PreloadsManyWithBlanks", "LD_PRELOAD='/nowhere/a.so /nowhere/b.so:/nowhere/c.so'"),
      {"LibraryPathOf500", InstallElsewhere, "dsdr", ManyEntries(), {"dsdr"}},
      {"LibraryPathWithOrigin",
       InstallElsewhere,
       "dsdr",
       "LD_LIBRARY_PATH=\\$ORIGIN/../other",
       {"dsdr"}},
      {"LibraryPathWithBracedOrigin",
       InstallElsewhere,
       "dsdr",
       "LD_LIBRARY_PATH=\\${ORIGIN}/../other",
       {"dsdr"}},
      {"LibraryPathWithSemicolons",
       InstallElsewhere,
       "dsdr",
       "LD_LIBRARY_PATH=\"/nowhere;" + TreePath("other") + "\"",
       {"dsdr"}},
      {"LibraryPathIsALink",
       [] {
         InstallElsewhere();
         fs::create_directory_symlink("other", TreePath("link"));
       },
       "dsdr",
       "LD_LIBRARY_PATH=" + TreePath("link"),
       {"dsdr"}},
      {"LibraryPathIsAFile",
       InstallElsewhere,
       "nothing",
       "LD_LIBRARY_PATH=" + TreePath("other/librngdsdr.so"),
       {"dsdr"}},
      {"LibraryPathWithPlatform",
       [] {
         InstallElsewhere();
         fs::create_directory(TreePath("x86_64"));
         fs::rename(TreePath("other/librngdsdr.so"), TreePath("x86_64/librngdsdr.so"));
       },
       "",
       "LD_LIBRARY_PATH=" + TreePath("\\$PLATFORM"),
       {"dsdr"}},
      {"LibraryPathWithLib",
       [] {
         InstallElsewhere();
         fs::create_directories(TreePath("x/lib/x86_64-linux-gnu"));
         fs::rename(TreePath("other/librngdsdr.so"),
                    TreePath("x/lib/x86_64-linux-gnu/librngdsdr.so"));
       },
       "",
       "LD_LIBRARY_PATH=" + TreePath("x/\\$LIB"),
       {"dsdr"}},
      {"OldProcessorDirectories",
       [] {
         InstallElsewhere();
         fs::create_directories(TreePath("other/tls/x86_64"));
         fs::rename(TreePath("other/librngdsdr.so"), TreePath("other/tls/x86_64/librngdsdr.so"));
       },
       "",
       "LD_LIBRARY_PATH=" + TreePath("other"),
       {"dsdr"}},
      {"V3ProcessorDirectory",
       [] {
         InstallElsewhere();
         fs::create_directories(TreePath("other/glibc-hwcaps/x86-64-v3"));
         fs::rename(TreePath("other/librngdsdr.so"),
                    TreePath("other/glibc-hwcaps/x86-64-v3/librngdsdr.so"));
       },
       "",
       "LD_LIBRARY_PATH=" + TreePath("other"),
       {"dsdr"}},
      {"V3ProcessorDirectorySwitchedOff",
       [] {
         InstallElsewhere();
         fs::create_directories(TreePath("other/glibc-hwcaps/x86-64-v3"));
         fs::rename(TreePath("other/librngdsdr.so"),
                    TreePath("other/glibc-hwcaps/x86-64-v3/librngdsdr.so"));
       },
       "",
       "GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2_Usable,-AVX2 LD_LIBRARY_PATH=" + TreePath("other"),
       {"dsdr"}},
      {"StickyDirectory",
       [] {
         InstallElsewhere();
         fs::permissions(TreePath(""), fs::perms(0755));
         fs::permissions(TreePath("other"), fs::perms(01777));
       },
       "dsdr",
       "LD_LIBRARY_PATH=" + TreePath("other") +
           " setpriv --reuid=65534 --regid=65534 --clear-groups",
       {"dsdr"}},
  };
  for (const Situation& situation : DescriptorLimits()) situations.push_back(situation);
  return situations;
}
