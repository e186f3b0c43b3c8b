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

// A host that gets no generator, or not the configured one, deserves more than silence.
bool MayBeInOrder(const Seen& seen, const Situation& situation) {
  const bool isRunning = seen.find("signal") == std::string::npos &&
                         seen.find("status") == std::string::npos && seen != "threw an exception" &&
                         seen != "did not answer";
  return isRunning && seen != "nothing" && seen.find("unusable") == std::string::npos &&
         situation.exposed.empty();
}

void PrintLine(const Situation& situation, const Seen& host, const Seen& doctor, bool agree) {
  std::cout << "| " << situation.name << " | " << host << " | "
            << (host == doctor ? "the same" : doctor) << " | " << (agree ? "agree" : "DISAGREE")
            << " |\n";
}

}  // namespace

TEST_P(Situations, Agree) {
  const Situation& situation = GetParam();
  situation.arrange();
  const Seen host = WhatAHostSees(situation.environment);
  const DoctorsAnswer doctor = WhatTheDoctorSays(situation.environment);
  bool agree = host == doctor.seen;
  for (const std::string& kind : situation.kinds) {
    const bool isApproved = DoctorApproves(kind, situation.environment);
    EXPECT_EQ(Lists(host, kind), isApproved) << "doctor " << kind;
    agree = agree && Lists(host, kind) == isApproved;
  }
  if (!MayBeInOrder(host, situation)) {
    EXPECT_NE(0, doctor.status) << doctor.report;
    agree = agree && doctor.status != 0;
  }
  if (!situation.exposed.empty()) {
    EXPECT_TRUE(NamesPath(doctor.report, TreePath(situation.exposed))) << doctor.report;
  }
  PrintLine(situation, host, doctor.seen, agree);
  const Seen meant = situation.host.empty() ? host : situation.host;
  EXPECT_EQ(meant, host) << "the situation is not as it was meant";
  EXPECT_EQ(host, doctor.seen) << doctor.report;
}

namespace {

std::string NameOf(const testing::TestParamInfo<Situation>& info) { return info.param.name; }

}  // namespace

INSTANTIATE_TEST_SUITE_P(Company, Situations, testing::ValuesIn(CompanySituations()), NameOf);
INSTANTIATE_TEST_SUITE_P(FakePlugin, Situations, testing::ValuesIn(FakePluginSituations()), NameOf);
INSTANTIATE_TEST_SUITE_P(File, Situations, testing::ValuesIn(FileSituations()), NameOf);
INSTANTIATE_TEST_SUITE_P(Setting, Situations, testing::ValuesIn(SettingsSituations()), NameOf);
INSTANTIATE_TEST_SUITE_P(User, Situations, testing::ValuesIn(UserSituations()), NameOf);
INSTANTIATE_TEST_SUITE_P(Surrounding, Situations, testing::ValuesIn(SurroundingSituations()),
                         NameOf);
