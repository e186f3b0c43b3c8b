#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/tree.h"

#include <cstdint>
#include <filesystem>
#include <gmock/gmock.h>
#include <set>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr unsigned kSomebody = 54321;  // has no account

void SetMode(const std::string& path, mode_t mode) { fs::permissions(path, fs::perms(mode)); }

void GiveTo(unsigned user, const std::string& path) {
  if (::lchown(path.c_str(), user, user) != 0) throw std::runtime_error("cannot give away " + path);
}

// "r", "w" and "x" are 4, 2 and 1.
struct AclRow {
  std::uint16_t tag;
  std::uint16_t permissions;
  std::uint32_t id = 0xFFFFFFFF;
};

// False where the file system has no such lists. `named` are the rows between owner and mask.
bool SetAcl(const std::string& path, const AclRow& named, std::uint16_t mask) {
  const AclRow rows[] = {{1, 7},
                         named.tag == 2 ? named : AclRow{4, 5},
                         named.tag == 2 ? AclRow{4, 5} : named,
                         {16, mask},
                         {32, 5}};
  std::string bytes("\2\0\0\0", 4);
  for (const AclRow& row : rows) bytes.append(reinterpret_cast<const char*>(&row), sizeof row);
  return ::lsetxattr(path.c_str(), "system.posix_acl_access", bytes.data(), bytes.size(), 0) == 0;
}

class DoctorOnPermissions : public Doctor {
 protected:
  void SetUp() override {
    Doctor::SetUp();
    InstallUnixDev();
    fs::create_directory(TreePath("etc"));
    WriteFile(Settings(), "[Devices]\n");
  }

  static json Findings(const std::string& environment = "") {
    return Examine("unixdev", environment).at("permissions");
  }

  // "PATH: PROBLEM" for each.
  static std::vector<std::string> Problems(const std::string& environment = "") {
    std::vector<std::string> problems;
    for (const json& finding : Findings(environment)) {
      problems.push_back(Text(finding.at("path")) + ": " + Text(finding.at("problem")));
    }
    return problems;
  }

  static std::string FirstFix(const std::string& environment = "") {
    return Text(Findings(environment).at(0).at("fix"));
  }

  static std::string Lib() { return TreePath("lib"); }
  static std::string Plugin() { return TreePath("lib/librngunixdev.so"); }
  static std::string Settings() { return TreePath(kSettingsFile); }
  static std::string NewSettings() { return Settings() + ".tmp"; }
};

class DoctorOnForeignFiles : public DoctorOnPermissions {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    DoctorOnPermissions::SetUp();
  }
};

}  // namespace

TEST_F(DoctorOnPermissions, AnInstallationInOrderHasNoFindings) {
  EXPECT_EQ(json::array(), Examine("").at("permissions"));
  EXPECT_EQ(0, Run("doctor").status);
}

TEST_F(DoctorOnPermissions, SeesWhatEveryoneCanWrite) {
  SetMode(Lib(), 0757);
  EXPECT_EQ(json({{{"path", Lib()},
                   {"problem", "everyone can replace the files in it and add others"},
                   {"fix", "Allow only root and yourself to write to it: chmod o-w " + Lib()}}}),
            Findings());
  SetMode(Lib(), 0755);
  for (const std::string& file :
       {Plugin(), fs::canonical(TreePath("lib/librngaggregator.so.1")).string(), Settings(),
        TreePath("lib/libcrypt_known_path.so")}) {
    const mode_t before = ModeOf(file);
    SetMode(file, 0666);
    EXPECT_EQ(json({{{"path", file},
                     {"problem", "everyone can write to it"},
                     {"fix", "Allow only root and yourself to write to it: chmod go-w " + file}}}),
              Findings());
    SetMode(file, before);
  }
}

// Without the right to search a directory, nobody can create anything in it.
TEST_F(DoctorOnPermissions, WritingADirectoryTakesSearchingIt) {
  SetMode(Lib(), 0752);
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(DoctorOnPermissions, SeesAnAncestorThatEveryoneCanWrite) {
  SetMode(TreePath(""), 0707);
  const std::string tree = fs::path(TreePath("")).parent_path();
  EXPECT_THAT(Problems(),
              ElementsAre(tree + ": everyone can replace the files in it and add others"));
}

TEST_F(DoctorOnPermissions, SeesADirectoryThatOthersCouldCreate) {
  fs::create_directory(TreePath("open"));
  SetMode(TreePath("open"), 01777);
  const std::string missing = TreePath("open/missing");
  EXPECT_THAT(Problems("LD_LIBRARY_PATH=" + missing + "/deeper"),
              ElementsAre(missing + ": it does not exist, and everyone can create it in " +
                          TreePath("open")));
  EXPECT_EQ("Use a directory to which only root and yourself can write, or create it first.",
            FirstFix("LD_LIBRARY_PATH=" + missing + "/deeper"));
  fs::create_directory(missing);
  EXPECT_THAT(Problems("LD_LIBRARY_PATH=" + missing + "/deeper"), IsEmpty());
}

TEST_F(DoctorOnPermissions, PluginsCanBeAddedToAStickyDirectory) {
  SetMode(Lib(), 01777);
  EXPECT_THAT(Problems(), ElementsAre(Lib() + ": everyone can add files to it"));
}

TEST_F(DoctorOnPermissions, TheNewSettingsCanBePlantedInAStickyDirectory) {
  SetMode(TreePath("etc"), 01777);
  EXPECT_THAT(Problems(),
              ElementsAre(NewSettings() + ": it does not exist, and everyone can create it in " +
                          TreePath("etc")));
  WriteFile(NewSettings(), "");
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(DoctorOnPermissions, SeesWhomAnAccessControlListLetsWrite) {
  if (!SetAcl(Lib(), {2, 7, kSomebody}, 7)) GTEST_SKIP() << "no access control lists here";
  EXPECT_THAT(Problems(),
              ElementsAre(Lib() + ": the user 54321 can replace the files in it and add others"));
  EXPECT_THAT(FirstFix(), HasSubstr(": setfacl -x u:54321 " + Lib()));
  SetAcl(Lib(), {8, 7, kSomebody}, 7);
  EXPECT_THAT(Problems(), ElementsAre(StartsWith(Lib() + ": the members of the group 54321 can ")));
}

TEST_F(DoctorOnPermissions, AnAccessControlListIsReadWithItsMask) {
  if (!SetAcl(Lib(), {2, 7, kSomebody}, 5)) GTEST_SKIP() << "no access control lists here";
  EXPECT_THAT(Problems(), IsEmpty());
  // The mode now seems to let the group write.
  SetAcl(Lib(), {2, 7, ::geteuid()}, 7);
  EXPECT_EQ(0775U, ModeOf(Lib()));
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(DoctorOnPermissions, FollowsALinkToWhereOthersCanWrite) {
  fs::create_directory(TreePath("open"));
  fs::rename(Plugin(), TreePath("open/real.so"));
  fs::create_symlink("../open/real.so", Plugin());
  SetMode(TreePath("open"), 0777);
  EXPECT_THAT(
      Problems(),
      ElementsAre(TreePath("open") + ": everyone can replace the files in it and add others",
                  Plugin() + ": it is a link to ../open/real.so, so programs load what is there"));
  EXPECT_EQ("Unless that is intended, put the file itself there.",
            Text(Findings().at(1).at("fix")));
}

TEST_F(DoctorOnPermissions, ALinkToAVersionBesideItIsUsual) {
  fs::rename(Plugin(), Plugin() + ".1.2");
  fs::create_symlink("librngunixdev.so.1.2", Plugin());
  EXPECT_THAT(Problems(), IsEmpty());
  fs::rename(Settings(), Settings() + ".1");
  fs::create_symlink("rng.ini.1", Settings());
  EXPECT_THAT(Problems(), ElementsAre(StartsWith(Settings() + ": it is a link to rng.ini.1, ")));
}

TEST_F(DoctorOnPermissions, FindingsMatchTheSchema) {
  SetMode(Lib(), 0777);
  json report = Examine("unixdev");
  const Result result = MatchSchema("doctor.schema.json", report.dump());
  EXPECT_EQ(0, result.status) << result.errors;
  report.at("permissions")[0].erase("fix");
  EXPECT_NE(0, MatchSchema("doctor.schema.json", report.dump()).status);
}

TEST_F(DoctorOnPermissions, SeesAFileWithTwoNames) {
  fs::create_hard_link(Plugin(), TreePath("second"));
  EXPECT_THAT(
      Problems(),
      ElementsAre(Plugin() +
                  ": it has 2 names (hard links), so who writes to one of them changes all"));
  EXPECT_EQ("Unless that is intended, put a copy there that has only this name.", FirstFix());
  EXPECT_EQ(0, Run("doctor").status);
}

TEST_F(DoctorOnPermissions, SeesWhatIsNoRegularFile) {
  ASSERT_EQ(0, ::mkfifo(TreePath("lib/librngdsdr.so").c_str(), 0600));
  sockaddr_un address = {AF_UNIX, {}};
  fs::current_path(TreePath("etc"));
  std::string("rng.ini.tmp").copy(address.sun_path, sizeof address.sun_path);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(0, ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  ::close(socket);
  EXPECT_THAT(Problems(), ElementsAre(TreePath("lib/librngdsdr.so") + ": it is not a regular file",
                                      NewSettings() + ": it is not a regular file"));
  EXPECT_EQ("Remove it, and put a regular file there if one is needed.", FirstFix());
}

TEST_F(DoctorOnPermissions, SeesALinkInThePlaceOfTheSettings) {
  WriteFile(TreePath("victim"), "");
  fs::create_symlink(TreePath("victim"), NewSettings());
  EXPECT_THAT(Problems(), ElementsAre(NewSettings() + ": it is a link to " + TreePath("victim") +
                                      ", and storing a default overwrites that file"));
  EXPECT_EQ("Remove it: rm " + NewSettings(), FirstFix());
  fs::remove(NewSettings());
  fs::create_hard_link(TreePath("victim"), NewSettings());
  EXPECT_THAT(Problems(),
              ElementsAre(NewSettings() +
                          ": it has 2 names, and storing a default overwrites the file under all "
                          "of them"));
  EXPECT_EQ("Remove it: rm " + NewSettings(), FirstFix());
  fs::remove(NewSettings());
  fs::rename(Settings(), TreePath("elsewhere"));
  fs::create_symlink(TreePath("elsewhere"), Settings());
  EXPECT_THAT(Problems(), ElementsAre(Settings() + ": it is a link to " + TreePath("elsewhere") +
                                      ", and storing a default replaces the link, not that file"));
  EXPECT_EQ("Put the file itself there.", FirstFix());
  fs::remove(TreePath("elsewhere"));
  EXPECT_THAT(Problems(), ElementsAre(HasSubstr(", and storing a default creates one")));
  EXPECT_EQ("Remove it: rm " + Settings(), FirstFix());
}

TEST_F(DoctorOnPermissions, SeesADependencyThatEveryoneCanWrite) {
  InstallPlugin("biokbd", "missing_dependency");
  const std::string needed = TreePath("needed/libabsent_device.so");
  fs::create_directory(TreePath("needed"));
  fs::copy_file(FAKES_DIR "/missing_dependency/libabsent_device.so", needed);
  SetMode(needed, 0646);
  const json found = Examine("biokbd", "LD_LIBRARY_PATH=" + TreePath("needed")).at("permissions");
  EXPECT_THAT(found.dump(), HasSubstr("{\"fix\":\"Allow only root and yourself to write to it: "
                                      "chmod o-w " +
                                      needed + "\",\"path\":\"" + needed +
                                      "\",\"problem\":\"everyone can write to it\"}"));
}

TEST_F(DoctorOnPermissions, TheStatusOfAKindDoesNotSpeakOfThem) {
  SetMode(Lib(), 0777);
  const Result kind = Run("doctor unixdev");
  EXPECT_EQ(0, kind.status);
  EXPECT_THAT(kind.output, HasSubstr("\n" + Lib() +
                                     ": everyone can replace the files in it and add others. "
                                     "Allow only root and yourself to write to it: chmod go-w " +
                                     Lib() + "\n"));
}

TEST_F(DoctorOnForeignFiles, WhatRootsProcessesUseMattersToTheStatus) {
  SetMode(Lib(), 0777);
  const Result result = Run("doctor");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("rngctl: Other users can change 1 path that root's processes load or write.\n",
            result.errors);
}

// Nobody else loads it.
TEST_F(DoctorOnPermissions, AUsersOwnInstallationDoesNotMatterToTheStatus) {
  SetMode(Lib(), 0777);
  if (::geteuid() == 0 && RunShell("chown -R 65534:65534 " + TreePath("")).status != 0) FAIL();
  const Result result = RunForked([] {
    const Unprivileged user;
    ::execl(Rngctl().c_str(), "rngctl", "doctor", "--json", nullptr);
    return 127;
  });
  EXPECT_EQ(0, result.status) << result.errors;
  const json found = json::parse(result.output).at("permissions");
  ASSERT_EQ(1U, found.size()) << found;
  EXPECT_EQ(Lib(), found[0].at("path"));
}

TEST_F(DoctorOnForeignFiles, SeesAnotherOwner) {
  for (const std::string& path : {Lib(), Plugin(), Settings()}) {
    GiveTo(kSomebody, path);
    EXPECT_EQ(json({{{"path", path},
                     {"problem", "it belongs to the user 54321, who can change it"},
                     {"fix", "Give it to root: chown -h root " + path}}}),
              Findings());
    EXPECT_THAT(Problems("SUDO_UID=54321"), IsEmpty());
    EXPECT_THAT(Problems("SUDO_UID=54321x"), testing::SizeIs(1));
    GiveTo(0, path);
  }
}

// There, all owners that are not mapped look the same, root among them.
TEST_F(DoctorOnForeignFiles, AnOwnerThatTheSandboxHidesIsNotHeldAgainstAnybody) {
  const std::string sandbox = "unshare --user --map-root-user ";
  if (RunShell(sandbox + "true").status != 0) GTEST_SKIP() << "no user namespaces here";
  GiveTo(kSomebody, Lib());
  const Result result = RunShell(sandbox + Rngctl() + " doctor --json unixdev");
  EXPECT_EQ(json::array(), json::parse(result.output).at("permissions"));
}

TEST_F(DoctorOnForeignFiles, SeesAnotherOwnerInAStickyDirectory) {
  SetMode(TreePath("etc"), 01777);
  WriteFile(NewSettings(), "");
  GiveTo(kSomebody, NewSettings());
  EXPECT_THAT(Problems(),
              ElementsAre(NewSettings() + ": it belongs to the user 54321, who can change it"));
  fs::remove(NewSettings());
  fs::create_symlink(Settings(), NewSettings());
  GiveTo(kSomebody, NewSettings());
  EXPECT_THAT(Problems(),
              ElementsAre(NewSettings() + ": it belongs to the user 54321, who can change it",
                          StartsWith(NewSettings() + ": it is a link to ")));
}

TEST_F(DoctorOnForeignFiles, SeesAGroupThatCanWrite) {
  SetMode(Lib(), 0775);
  EXPECT_THAT(Problems(), ElementsAre(Lib() + ": the members of the group \"root\" can replace the "
                                              "files in it and add others"));
  EXPECT_THAT(FirstFix(), HasSubstr(": chmod g-w " + Lib()));
  ASSERT_EQ(0, ::chown(Lib().c_str(), 0, kSomebody));
  EXPECT_THAT(Problems(), ElementsAre(HasSubstr(": the members of the group 54321 can ")));
}

TEST_F(DoctorOnForeignFiles, TheOwnerOfAStickyDirectoryCanReplaceWhatIsInIt) {
  SetMode(TreePath("etc"), 01755);
  GiveTo(kSomebody, TreePath("etc"));
  EXPECT_THAT(Problems(),
              ElementsAre(TreePath("etc") + ": it belongs to the user 54321, who can change it"));
}
