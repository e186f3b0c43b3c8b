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
  const char* fix;  // a part of it
};

void PrintTo(const UnavailableKind& instance, std::ostream* out) { *out << instance.kind; }

class DoctorOnUnavailable : public Doctor, public testing::WithParamInterface<UnavailableKind> {};

}  // namespace

TEST_P(DoctorOnUnavailable, NamesWhatTheKindNeeds) {
  InstallX11("whole");
  InstallPlugin(GetParam().kind, "unavailable");
  const json row = ExamineKind(GetParam().kind);
  EXPECT_EQ("not-available", row.at("verdict"));
  EXPECT_THAT(Text(row.at("fix")), HasSubstr(GetParam().fix));
}

INSTANTIATE_TEST_SUITE_P(Of, DoctorOnUnavailable,
                         testing::Values(UnavailableKind{"bioqt", "graphical session"},
                                         UnavailableKind{"biokbd", "in a terminal"},
                                         UnavailableKind{"unixdev", "getrandom"},
                                         UnavailableKind{"Rutoken", "Connect the device"}),
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
