#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <ostream>

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

struct UnavailableKind {
  const char* kind;
  const char* fix;
};

void PrintTo(const UnavailableKind& instance, std::ostream* out) { *out << instance.kind; }

class DoctorOnUnavailable : public Doctor, public testing::WithParamInterface<UnavailableKind> {};

}  // namespace

TEST_P(DoctorOnUnavailable, NamesWhatTheKindNeeds) {
  InstallX11("whole");
  InstallPlugin(GetParam().kind, "unavailable");
  const json row = ExamineKind(GetParam().kind);
  EXPECT_EQ("not-available", row.at("verdict"));
  EXPECT_EQ(GetParam().fix, Text(row.at("fix")));
}

INSTANTIATE_TEST_SUITE_P(
    Of, DoctorOnUnavailable,
    testing::Values(
        UnavailableKind{
            "bioqt",
            "It asks the user in a window: run the program in a graphical session of this user, "
            "and make sure that the programs and libraries that draw the window are installed."},
        UnavailableKind{"biokbd",
                        "It asks the user to type: run the program in a terminal, with standard "
                        "input, and make sure that the program that asks is installed."},
        UnavailableKind{"unixdev",
                        "It reads the system's own generator: make sure that no sandbox or "
                        "container blocks getrandom or /dev/urandom."},
        UnavailableKind{"Rutoken",
                        "Connect the device, and make sure that its driver is running, that its "
                        "licence is valid, and that this user may use it."}),
    [](const auto& instance) { return std::string(instance.param.kind); });

TEST_F(Doctor, NamesTheDataFileOfAPluginThatReadsOne) {
  InstallPlugin("dsdr", "unavailable");
  const std::string file = TreePath("share/dsdr.bin");
  const auto fix = [] { return Text(ExamineKind("dsdr").at("fix")); };
  EXPECT_EQ("Install its data file: there is no " + file + ".", fix());
  fs::create_directories(TreePath("share"));
  WriteFile(file, "");
  EXPECT_EQ("Replace its data file " + file + ": it is empty.", fix());
  WriteFile(file, "bytes");
  EXPECT_THAT(fix(), StartsWith("Check its data file " + file));
  fs::permissions(file, fs::perms::none);
  EXPECT_EQ("Make its data file readable for this user: " + file + ": Permission denied.",
            ExamineKindAsUser("dsdr").at("fix"));
}

TEST_F(Doctor, WhatIsNoFileIsNoDataFile) {
  InstallPlugin("dsdr", "unavailable");
  fs::create_directories(TreePath("share/dsdr.bin"));
  EXPECT_EQ("Replace " + TreePath("share/dsdr.bin") + ": it is not a data file.",
            ExamineKind("dsdr").at("fix"));
}

TEST_F(Doctor, AFactoryThatGivesNothingMayLackItsDataFile) {
  InstallPlugin("dsdr", "breaking/factory_gives_null");
  const json row = ExamineKind("dsdr");
  EXPECT_EQ("factory-gave-nothing", row.at("verdict"));
  EXPECT_EQ("Install its data file: there is no " + TreePath("share/dsdr.bin") + ".",
            row.at("fix"));
}
