#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

Situation TwoOf(const std::string& disturbance, const std::string& host,
                const std::string& environment = "") {
  return {disturbance + "BesideAGoodOne",
          [disturbance] {
            InstallPlugin("dsdr", "disturbing/" + disturbance);
            InstallPlugin("unixdev", "stub");
          },
          host,
          environment,
          {"dsdr", "unixdev"}};
}

}  // namespace

std::vector<Situation> DisturbedSituations() {
  std::vector<Situation> situations;
  for (const char* name :
       {"LowerMemoryLimit", "EndThread", "UnloadItself", "WriteToLowDescriptors"}) {
    situations.push_back(TwoOf(name, ""));
  }
  // This host does not ask for flags, and the whole report is about hosts that do.
  for (const char* name : {"Flags_Crash", "Flags_Exit", "Flags_Hang"}) {
    Situation situation = TwoOf(name, "dsdr unixdev");
    situation.difference = "the doctor lists by capability, which this host does not";
    situations.push_back(situation);
  }
  situations.push_back({"LosesThePlaceOfARelativePath",
                        [] {
                          fs::create_directory(TreePath("other"));
                          InstallPlugin("dsdr", "disturbing/LoseThePlace");
                          InstallPlugin("unixdev", "stub");
                          fs::rename(TreePath("lib/librngunixdev.so"),
                                     TreePath("other/librngunixdev.so"));
                        },
                        "",
                        "-C " + TreePath("") + " LD_LIBRARY_PATH=other",
                        {"dsdr", "unixdev"}});
  situations.push_back({"OneBlocksTheAlarmOfAnother",
                        [] {
                          InstallPlugin("dsdr", "disturbing/IgnoreSignals");
                          fs::copy_file(FakePlugin("dsdr", "disturbing/RaiseAlarm"),
                                        TreePath("lib/librngsobol.so"));
                        },
                        "",
                        "",
                        {"dsdr", "sobol"}});
  for (const char* name :
       {"Device_Crash", "Device_Throw", "Device_Quit", "Device_Stop", "Device_EndThread"}) {
    situations.push_back({std::string(name) + "AsDefault",
                          [name] {
                            InstallPlugin("dsdr", std::string("disturbing/") + name);
                            WriteFile(TreePath("etc/rng.ini"),
                                      "[Devices]\nRandomNumberGeneratorType=dsdr\n"
                                      "RandomNumberGeneratorHardwareID=A1\n");
                          },
                          ""});
  }
  return situations;
}
