#include "tests/support/tree.h"
#include "tools/rngctl/doctor/permissions/rights.h"
#include "tools/rngctl/doctor/permissions/way.h"

#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

// Ann is the present user. Her own group has nobody else in it; "staff" has Ben.
Users ThreeUsers() {
  return {{{"root", 0, 0}, {"ann", 1000, 1000}, {"ben", 1001, 1001}},
          {{"root", 0, {}},
           {"ann", 1000, {"ann"}},
           {"staff", 50, {"ann", "ben"}},
           {"empty", 60, {}},
           {"ben", 1001, {}}},
          {0, 1000}};
}

Rights Directory(mode_t mode, uid_t owner = 0, gid_t group = 0) {
  return {0, S_IFDIR | mode, owner, group};
}

std::vector<std::string> Names(const Rights& rights) {
  std::vector<std::string> names;
  for (const Writer& writer : FindWriters("/x", rights, ThreeUsers())) names.push_back(writer.who);
  return names;
}

std::vector<std::string> Fixes(const Rights& rights) {
  std::vector<std::string> fixes;
  for (const Writer& writer : FindWriters("/x", rights, ThreeUsers())) fixes.push_back(writer.fix);
  return fixes;
}

}  // namespace

TEST(Writers, AreOnlyRootAndThePresentUser) {
  EXPECT_THAT(Names(Directory(0755)), IsEmpty());
  EXPECT_THAT(Names(Directory(0755, 1000)), IsEmpty());
  EXPECT_THAT(Names({ENOENT}), IsEmpty());
  EXPECT_THAT(Names({0, S_IFLNK | 0777, 1001, 0}), IsEmpty());
}

TEST(Writers, AreOwnersEveryoneAndGroups) {
  EXPECT_THAT(Names(Directory(0755, 1001)), ElementsAre("the user \"ben\""));
  EXPECT_THAT(Names(Directory(0755, 1002)), ElementsAre("the user 1002"));
  EXPECT_THAT(Names(Directory(0777)), ElementsAre("everyone"));
  EXPECT_THAT(Names({0, S_IFREG | 0602, 0, 0}), ElementsAre("everyone"));
  EXPECT_THAT(Names(Directory(0775, 0, 50)), ElementsAre("the members of the group \"staff\""));
}

TEST(Writers, AGroupCountsIfItMayHaveOtherMembers) {
  EXPECT_THAT(Names(Directory(0775, 0, 1000)), IsEmpty());
  EXPECT_THAT(Names(Directory(0775, 0, 60)), IsEmpty());
  EXPECT_THAT(Names(Directory(0775, 0, 0)), ElementsAre("the members of the group \"root\""));
  EXPECT_THAT(Names(Directory(0775, 0, 1001)), ElementsAre("the members of the group \"ben\""));
  EXPECT_THAT(Names(Directory(0775, 0, 77)), ElementsAre("the members of the group 77"));
}

TEST(Writers, OfAnAccessControlListCountWithItsMask) {
  Rights rights = Directory(0775);
  rights.acl = {
      {AclEntry::kUser, 7, 1001}, {AclEntry::kOwningGroup, 7, 0}, {AclEntry::kGroup, 5, 50}};
  EXPECT_THAT(Names(rights), ElementsAre("the user \"ben\"", "the members of the group \"root\""));
  rights.acl.push_back({AclEntry::kMask, 5, 0});
  EXPECT_THAT(Names(rights), IsEmpty());
}

TEST(Writers, EachHasACommandThatEndsIt) {
  Rights rights = Directory(0775);
  rights.acl = {
      {AclEntry::kUser, 7, 1001}, {AclEntry::kOwningGroup, 7, 0}, {AclEntry::kGroup, 7, 50}};
  EXPECT_THAT(Fixes(rights),
              ElementsAre("setfacl -x u:1001 /x", "setfacl -m g::rX /x", "setfacl -x g:50 /x"));
  EXPECT_THAT(Fixes(Directory(0775, 1001, 50)), ElementsAre("chown root /x", "chmod g-w /x"));
  EXPECT_THAT(Fixes(Directory(0777)), ElementsAre("chmod go-w /x"));
  EXPECT_THAT(Fixes(Directory(0757)), ElementsAre("chmod o-w /x"));
}

TEST(Writers, AListThatIsNotUnderstoodIsNone) {
  EXPECT_THAT(ParseAcl(""), IsEmpty());
  EXPECT_THAT(ParseAcl(std::string("\2\0\0\0\1", 5)), IsEmpty());
  EXPECT_THAT(ParseAcl(std::string("\3\0\0\0", 4) + std::string(8, '\1')), IsEmpty());
  EXPECT_EQ(1U, ParseAcl(std::string("\2\0\0\0", 4) + std::string(8, '\1')).size());
}

TEST(WalkTo, GoesThroughLinksAndEndsWhereNothingIs) {
  fs::create_directories(TreePath("a/b"));
  fs::create_symlink("../c", TreePath("a/link"));
  fs::create_directory(TreePath("c"));
  std::vector<std::string> entries;
  for (const Step& step : WalkTo(TreePath("a/b/../link/gone/more"))) entries.push_back(step.entry);
  const fs::path tree = fs::path(TreePath("")).parent_path();
  ASSERT_LE(5U, entries.size());
  entries.erase(entries.begin(), entries.end() - 5);
  EXPECT_THAT(entries,
              ElementsAre(tree / "a", tree / "a/b", tree / "a/link", tree / "c", tree / "c/gone"));
}

TEST(WalkTo, EndsInACircleOfLinks) {
  fs::create_symlink("circle", TreePath("circle"));
  const std::vector<Step> steps = WalkTo(TreePath("circle"));
  ASSERT_FALSE(steps.empty());
  EXPECT_TRUE(steps.back().ofEntry.IsLink());
}

TEST(WalkTo, GoesThroughAsManyLinksAsTheSystemFollows) {
  constexpr int kMost = 40;
  const auto link = [](int number) { return TreePath("link" + std::to_string(number)); };
  WriteFile(link(kMost), "");
  for (int i = 0; i < kMost; ++i) fs::create_symlink(link(i + 1), link(i));
  ASSERT_TRUE(fs::exists(link(0)));
  EXPECT_EQ(link(kMost), WalkTo(link(0)).back().entry);
}
