#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace fs = std::filesystem;

std::vector<Situation> OddSettingsSituations() {
  const std::string type = "RandomNumberGeneratorType=dsdr\n";
  const std::string section = "[Devices]\n";
  const std::vector<std::pair<std::string, std::string>> files = {
      {"Bom", "\xEF\xBB\xBF" + section + type},
      {"BomAndBlankLine", "\xEF\xBB\xBF\n" + section + type},
      {"NulInTheValue", section + std::string("RandomNumberGeneratorType=ds\0dr\n", 32)},
      {"NulAfterTheValue", section + std::string("RandomNumberGeneratorType=dsdr\0\0\n", 33)},
      {"NulBeforeTheSection", std::string("\0\n", 2) + section + type},
      {"NulAtTheEnd", section + type + std::string("\0\0\0", 3)},
      {"HugeLineBefore", std::string(1000000, 'x') + "\n" + section + type},
      {"HugeLineIn", section + std::string(1000000, 'x') + "\n" + type},
      {"HugeComment", section + ";" + std::string(100000, '=') + "\n" + type},
      {"HugeValue", section + "RandomNumberGeneratorType=" + std::string(1000000, 'x') + "\n"},
      {"HugeDevice",
       section + type + "RandomNumberGeneratorHardwareID=" + std::string(1000000, 'x') + "\n"},
      {"ManyLines", section +
                        [] {
                          std::string lines;
                          for (int i = 0; i < 100000; ++i) lines += "a=b\n";
                          return lines;
                        }() +
                        type},
      {"SectionTwice", section + "a=b\n[Other]\nc=d\n" + section + type},
      {"SectionTwiceFirstCounts", section + type + section + "RandomNumberGeneratorType=sobol\n"},
      {"SectionTwiceOtherFirst", section + "RandomNumberGeneratorType=sobol\n" + section + type},
      {"SectionWithBlanks", "[ Devices ]\n" + type},
      {"SectionIndented", "  [Devices]\n" + type},
      {"SectionWithComment", "[Devices] ; which\n" + type},
      {"SectionInLowerCase", "[devices]\n" + type},
      {"SectionUnclosed", "[Devices\n" + type},
      {"KeyInLowerCase", section + "randomnumbergeneratortype=dsdr\n"},
      {"KeyIndented", section + "  RandomNumberGeneratorType = dsdr\n"},
      {"KeyWithTabs", section + "\tRandomNumberGeneratorType\t=\tdsdr\t\n"},
      {"KeyWithoutEquals", section + "RandomNumberGeneratorType dsdr\n"},
      {"KeyWithColon", section + "RandomNumberGeneratorType: dsdr\n"},
      {"TwoEquals", section + "RandomNumberGeneratorType==dsdr\n"},
      {"NoLineEnd", section + "RandomNumberGeneratorType=dsdr"},
      {"OldMacLines", "[Devices]\rRandomNumberGeneratorType=dsdr\r"},
      {"CrLfAndDevice",
       "[Devices]\r\nRandomNumberGeneratorType=dsdr\r\nRandomNumberGeneratorHardwareID=A1\r\n"},
      {"FormFeed", section + "RandomNumberGeneratorType=dsdr\f\n"},
      {"VerticalTab", section + "RandomNumberGeneratorType=\vdsdr\n"},
      {"NoBreakSpace", section + "RandomNumberGeneratorType=\xC2\xA0"
                                 "dsdr\n"},
      {"ZeroWidthSpace", section + "RandomNumberGeneratorType=dsdr\xE2\x80\x8B\n"},
      {"EscapesInTheValue", section + "RandomNumberGeneratorType=\033[31mdsdr\n"},
      {"NotUtf8", section + "RandomNumberGeneratorType=\xFF\xFE\n"},
      {"Utf16", std::string("\xFF\xFE[\0D\0e\0v\0", 9)},
      {"DeviceNotUtf8", section + type + "RandomNumberGeneratorHardwareID=\xFF\n"},
      {"DeviceWithBlanksInside", section + type + "RandomNumberGeneratorHardwareID=A 1\n"},
      {"DeviceOfSeventeenBytes",
       section + type + "RandomNumberGeneratorHardwareID=abcdefghijklmnopq\n"},
      {"DeviceBeforeKind", section + "RandomNumberGeneratorHardwareID=A1\n" + type},
      {"DeviceTwice", section + type +
                          "RandomNumberGeneratorHardwareID=C3\n"
                          "RandomNumberGeneratorHardwareID=A1\n"},
      {"KindEmptyThenGood", section + "RandomNumberGeneratorType=\n" + type},
      {"KindWithSlash", section + "RandomNumberGeneratorType=../dsdr\n"},
      {"OnlyEquals", section + "=\n==\n" + type},
      {"OnlyNul", std::string(5000, '\0')},
  };
  std::vector<Situation> situations;
  for (const auto& [name, content] : files) {
    situations.push_back({"File" + name,
                          [content] {
                            InstallPlugin("dsdr", "has_devices");
                            WriteFile(TreePath("etc/rng.ini"), content);
                          },
                          "",
                          "",
                          {}});
  }
  for (const auto& [name, target] :
       std::vector<std::pair<std::string, std::string>>{{"DevZero", "/dev/zero"},
                                                        {"DevFull", "/dev/full"},
                                                        {"DevNull", "/dev/null"},
                                                        {"DevTty", "/dev/tty"},
                                                        {"Urandom", "/dev/urandom"},
                                                        {"ProcMem", "/proc/self/mem"},
                                                        {"ProcMaps", "/proc/self/maps"}}) {
    situations.push_back({"FileIs" + name,
                          [target] {
                            InstallPlugin("dsdr", "has_devices");
                            fs::create_directories(TreePath("etc"));
                            fs::create_symlink(target, TreePath("etc/rng.ini"));
                          },
                          "",
                          "",
                          {}});
  }
  return situations;
}
