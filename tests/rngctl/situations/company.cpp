#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr char kLookupThrows[] =
    "a lookup that throws ends this host; the doctor goes on and blames the plug-in";

}  // namespace

std::vector<Situation> CompanySituations() {
  return {
      {"NoPlugin", [] {}, "nothing", "", {"dsdr"}},
      {"AllScripted",
       [] { InstallAllPlugins(); },
       "dsdr accord sobol JacartaGost Rutoken EsmartGost biokbd unixdev grandmaster biocore",
       "",
       {"dsdr", "biocore", "bioqt"}},
      {"OneClassInTwoPlugins",
       [] {
         InstallPlugin("dsdr", "shared_class");
         InstallPlugin("sobol", "shared_class");
       },
       "dsdr",
       "",
       {"dsdr", "biocore"}},
      {"OneClassAndAThirdPlugin",
       [] {
         InstallPlugin("dsdr", "shared_class");
         InstallPlugin("sobol", "shared_class");
         InstallPlugin("unixdev", "stub");
       },
       "dsdr unixdev",
       "",
       {"unixdev", "biocore"}},
      {"OneClosesAnother",
       [] {
         InstallPlugin("dsdr", "stub");
         InstallPlugin("sobol", "closes_another");
       },
       "crashed with signal 11",
       "",
       {"dsdr", "sobol"}},
      {"OneClosesAnotherThatIsAbsent",
       [] { InstallPlugin("sobol", "closes_another"); },
       "sobol",
       "",
       {"sobol"}},
      {"SonameOfAnother",
       [] {
         InstallPlugin("dsdr", "takes_name");
         InstallPlugin("sobol", "stub");
       },
       "dsdr",
       "",
       {"dsdr", "sobol"}},
      {"AsksForOneThatIsThere",
       [] {
         InstallX11("whole");
         InstallPlugin("bioqt", "stub");
         InstallPlugin("dsdr", "sociable");
         InstallPlugin("sobol", "sociable");
       },
       "bioqt dsdr",
       "",
       {"bioqt", "dsdr", "sobol"}},
      {"AsksForOneThatIsNotThere",
       [] {
         InstallPlugin("dsdr", "sociable");
         InstallPlugin("sobol", "sociable");
       },
       "sobol",
       "",
       {"dsdr", "sobol"}},
      {"AbortsBesideAnother",
       [] {
         InstallPlugin("sobol", "crowded");
         InstallPlugin("accord", "crowded");
       },
       "crashed with signal 6",
       "",
       {"sobol", "accord"}},
      {"AbortsOnlyBesideAnother",
       [] { InstallPlugin("sobol", "crowded"); },
       "sobol",
       "",
       {"sobol"}},
      {"AbortsWhenTheHostAsks",
       [] {
         InstallPlugin("accord", "crowded_name");
         InstallPlugin("sobol", "crowded_name");
       },
       "crashed with signal 6",
       "",
       {"sobol"}},
      {"CrashesBehindAGoodOne",
       [] {
         InstallPlugin("dsdr", "stub");
         InstallPlugin("grandmaster", "crashing");
       },
       "crashed with signal 6",
       "",
       {"dsdr", "grandmaster"}},
      {"EndsTheProcessBeforeAGoodOne",
       [] {
         InstallPlugin("accord", "exiting");
         InstallPlugin("unixdev", "stub");
       },
       "exited with status 7",
       "",
       {"accord", "unixdev"}},
      {"HangsBeforeAGoodOne",
       [] {
         InstallPlugin("sobol", "hanging");
         InstallPlugin("unixdev", "stub");
       },
       "did not answer",
       "",
       {"unixdev"}},
      {"ThrowsBesideAGoodOne",
       [] {
         InstallPlugin("dsdr", "throwing_start");
         InstallPlugin("unixdev", "stub");
       },
       "threw an exception",
       "",
       {"dsdr", "unixdev"}},
      {"ThrowsAtTheStop",
       [] {
         InstallPlugin("dsdr", "throwing_release");
         InstallPlugin("unixdev", "stub");
       },
       "threw an exception",
       "",
       {"dsdr"}},
      {"UnavailableBesideAGoodOne",
       [] {
         InstallPlugin("Rutoken", "unavailable");
         InstallPlugin("unixdev", "stub");
       },
       "unixdev",
       "",
       {"Rutoken", "unixdev"}},
      {"NamelessBeforeAGoodOne",
       [] {
         InstallPlugin("EsmartGost", "nameless");
         InstallPlugin("unixdev", "stub");
       },
       "unixdev",
       "",
       {"EsmartGost", "unixdev"}},
      {"NegativeNameBeforeAGoodOne",
       [] {
         InstallPlugin("sobol", "nameless");
         InstallPlugin("unixdev", "stub");
       },
       "threw an exception",
       "",
       {"sobol", "unixdev"},
       "",
       kLookupThrows},
      {"FlaglessIsFoundByName", [] { InstallPlugin("sobol", "flagless"); }, "sobol", "", {"sobol"}},
      {"AnotherKindsName",
       [] {
         InstallPlugin("sobol", "stub");
         fs::rename(TreePath("lib/librngsobol.so"), TreePath("lib/librngdsdr.so"));
       },
       "nothing",
       "",
       {"dsdr", "sobol"}},
      {"NoneAndAnUnavailableThatStays",
       [] { InstallPlugin("dsdr", "sticky_unavailable"); },
       "nothing",
       "",
       {"dsdr"}},
      {"StaysInTheProcess", [] { InstallPlugin("biocore", "sticky"); }, "biocore", "", {"biocore"}},
      {"StopsItself",
       [] { InstallPlugin("dsdr", "stops_itself"); },
       "was stopped by signal 19",
       "",
       {"dsdr"}},
      {"PrintsMegabytes", [] { InstallPlugin("dsdr", "prints_megabytes"); }, "dsdr", "", {"dsdr"}},
      {"TakesTheLowDescriptors",
       [] { InstallPlugin("dsdr", "reopens_descriptors"); },
       "dsdr",
       "",
       {"dsdr"}},
  };
}
