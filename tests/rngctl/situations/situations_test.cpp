// What a host sees in each situation, what the doctor says, and whether they agree: one line each.
// `./dev situations` shows them.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/rngctl/situations/seen.h"
#include "tests/rngctl/situations/situation.h"

#include <filesystem>
#include <iostream>

namespace {

class Situations : public Doctor, public testing::WithParamInterface<Situation> {
 protected:
  void SetUp() override {
    Doctor::SetUp();
    std::filesystem::copy_file(HOST, TreePath("bin/host"));
  }
};

// The words of `seen` before the default.
bool Lists(const Seen& seen, const std::string& kind) {
  return (" " + seen.substr(0, seen.find(';')) + " ").find(" " + kind + " ") != std::string::npos;
}

bool NamesPath(const std::string& report, const std::string& path) {
  for (const json& entry : json::parse(report).value("permissions", json::array())) {
    if (entry.at("path") == path) return true;
  }
  return false;
}

// If a host gets no generator, or not the configured one, the doctor must report a problem.
bool MayBeInOrder(const Seen& seen) {
  for (const char* bad : {"signal", "status", "threw", "did not answer", "nothing", "unusable"}) {
    if (seen.find(bad) != std::string::npos) return false;
  }
  return true;
}

struct Comparison {
  Seen host;
  DoctorsAnswer doctor;
  std::vector<std::string> disagreements;
};

Comparison Compare(const Situation& situation) {
  Comparison made = {
      WhatAHostSees(situation.environment), WhatTheDoctorSays(situation.environment), {}};
  auto& found = made.disagreements;
  if (made.host != made.doctor.seen) found.push_back("doctor: " + made.doctor.seen);
  for (const std::string& kind : situation.kinds) {
    const bool isApproved = DoctorApproves(kind, situation.environment);
    if (isApproved != Lists(made.host, kind)) {
      found.push_back("doctor " + kind + (isApproved ? ": usable" : ": not usable"));
    }
  }
  if (!MayBeInOrder(made.host) && made.doctor.status == 0) {
    found.push_back("doctor: status 0");
  }
  if (!situation.exposed.empty() && !NamesPath(made.doctor.report, TreePath(situation.exposed))) {
    found.push_back("doctor: no word of " + situation.exposed);
  }
  return made;
}

void PrintLine(const Situation& situation, const Comparison& made) {
  std::cout << "| " << situation.name << " | " << made.host << " | ";
  for (const std::string& disagreement : made.disagreements) std::cout << disagreement << "; ";
  std::cout << (made.disagreements.empty() ? "the same | agree" : "| DISAGREE");
  std::cout << (situation.difference.empty() ? "" : ": ") << situation.difference << " |\n";
}

}  // namespace

TEST_P(Situations, Agree) {
  const Situation& situation = GetParam();
  if (RunShell("env " + situation.environment + " true").status != 0) {
    GTEST_SKIP() << "this machine cannot run " << situation.environment;
  }
  situation.arrange();
  const Comparison made = Compare(situation);
  PrintLine(situation, made);
  const Seen meant = situation.host.empty() ? made.host : situation.host;
  EXPECT_EQ(meant, made.host) << "the situation is not as it was meant";
  EXPECT_EQ(situation.difference.empty(), made.disagreements.empty()) << made.doctor.report;
}

namespace {

std::string CaseName(const testing::TestParamInfo<Situation>& info) { return info.param.name; }

}  // namespace

INSTANTIATE_TEST_SUITE_P(Company, Situations, testing::ValuesIn(CompanySituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(FakePlugin, Situations, testing::ValuesIn(FakePluginSituations()),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(HarmlessFakePlugin, Situations,
                         testing::ValuesIn(HarmlessFakePluginSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(File, Situations, testing::ValuesIn(FileSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(Permission, Situations, testing::ValuesIn(PermissionSituations()),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Setting, Situations, testing::ValuesIn(SettingsSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(User, Situations, testing::ValuesIn(UserSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(Surrounding, Situations, testing::ValuesIn(SurroundingSituations()),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Limit, Situations, testing::ValuesIn(LimitSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(Disturbed, Situations, testing::ValuesIn(DisturbedSituations()), CaseName);
INSTANTIATE_TEST_SUITE_P(OddSetting, Situations, testing::ValuesIn(OddSettingsSituations()),
                         CaseName);
