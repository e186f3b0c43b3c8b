#include "tests/abi/installed_host.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>
#include <ostream>

// --- The thirteen variables

struct NameVariableValue {
  const char* variable;
  const char* value;
};

void PrintTo(const NameVariableValue& row, std::ostream* out) { *out << row.value; }

class NameVariable : public testing::TestWithParam<NameVariableValue> {};

TEST_P(NameVariable, HasItsValueAndCanBeWritten) {
  const AggregatorLibrary library;
  const char*& variable = library.NameVariable(GetParam().variable);
  EXPECT_STREQ(GetParam().value, variable);
  variable = "written";
  EXPECT_STREQ("written", library.NameVariable(GetParam().variable));
}

INSTANTIATE_TEST_SUITE_P(Each, NameVariable,
                         testing::Values(NameVariableValue{"rngBioCore", "biocore"},
                                         NameVariableValue{"rngBioX11", "unixx11"},
                                         NameVariableValue{"rngUnixDev", "unixdev"},
                                         NameVariableValue{"rngBioKb", "biokbd"},
                                         NameVariableValue{"rngGrandmaster", "grandmaster"},
                                         NameVariableValue{"rngDsdr", "dsdr"},
                                         NameVariableValue{"rngEsmartGost", "EsmartGost"},
                                         NameVariableValue{"rngRuToken", "Rutoken"},
                                         NameVariableValue{"rngJacartaGost", "JacartaGost"},
                                         NameVariableValue{"rngSobol", "sobol"},
                                         NameVariableValue{"rngAccord", "accord"},
                                         NameVariableValue{"rngBioQt", "bioqt"},
                                         NameVariableValue{"rngBioWin", "bio"}),
                         [](const auto& each) { return std::string(each.param.variable); });

// --- One object for a linked host and the library

class LinkedHost : public testing::TestWithParam<const char*> {};

TEST_P(LinkedHost, SharesTheNameVariablesWithTheLibrary) {
  InstallPlugin("dsdr");
  EXPECT_EQ(
      "loaded 1, at first bioqt, fallback 0\n"
      "dsdr 1, bioqt 0, fallback 1 dsdr\n",
      RunInstalledHost(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(With, LinkedHost,
                         testing::Values("name_variables_host_fixed", "name_variables_host_pie"),
                         [](const auto& each) { return std::string(each.param); });
