#include "tests/abi/installed_host.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>
#include <ostream>

// --- The thirteen variables

namespace {

struct NameVariableValue {
  std::string variable;
  std::string value;
};

void PrintTo(const NameVariableValue& row, std::ostream* out) { *out << row.value; }

// "bio" is no kind that a plug-in can have.
std::vector<NameVariableValue> AllNameVariables() {
  std::vector<NameVariableValue> rows = {{"rngBioWin", "bio"}};
  for (const Kind& kind : AllKinds()) rows.push_back({kind.variable, kind.name});
  return rows;
}

class NameVariable : public testing::TestWithParam<NameVariableValue> {};

}  // namespace

TEST_P(NameVariable, HasItsValueAndCanBeWritten) {
  const AggregatorLibrary library;
  const char*& variable = library.NameVariable(GetParam().variable);
  EXPECT_EQ(GetParam().value, variable);
  variable = "written";
  EXPECT_STREQ("written", library.NameVariable(GetParam().variable));
}

INSTANTIATE_TEST_SUITE_P(Each, NameVariable, testing::ValuesIn(AllNameVariables()),
                         [](const auto& each) { return each.param.variable; });

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
