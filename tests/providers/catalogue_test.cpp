#include "providers/catalogue.h"

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/kinds.h"

#include <gmock/gmock.h>
#include <new>
#include <ostream>

using testing::FieldsAre;

TEST(Catalogue, HasExactlyTheseRowsInThisOrder) {
  const ProviderCatalogue catalogue = BuildProviderCatalogue();
  ASSERT_EQ(12U, AllKinds().size());
  ASSERT_EQ(AllKinds().size(), catalogue.size());
  for (std::size_t row = 0; row < catalogue.size(); ++row) {
    const Kind& kind = AllKinds()[row];
    EXPECT_THAT(catalogue[row],
                FieldsAre(kind.name, kind.libraryFile, kind.factory, kind.needsDisplay));
  }
}

TEST(Catalogue, HasNoRowForBio) {
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) EXPECT_NE("bio", row.name);
}

// Each of these is the name of the row; "rngBioWin" has none.
struct RowName {
  std::size_t row;
  const char** variable;
};

void PrintTo(const RowName& name, std::ostream* out) { *out << "row " << name.row; }

class CatalogueName : public testing::TestWithParam<RowName> {};

TEST_P(CatalogueName, IsTheOneOfItsVariableWhenTheRowsAreBuilt) {
  *GetParam().variable = "renamed";
  const ProviderCatalogue catalogue = BuildProviderCatalogue();
  for (std::size_t row = 0; row < catalogue.size(); ++row) {
    EXPECT_EQ(row == GetParam().row, catalogue[row].name == "renamed") << row;
  }
}

TEST_P(CatalogueName, IsACopyThatALaterChangeDoesNotReach) {
  char text[] = "renamed";
  *GetParam().variable = text;
  const ProviderCatalogue catalogue = BuildProviderCatalogue();
  *GetParam().variable = "again";
  text[0] = 'X';
  EXPECT_EQ("renamed", catalogue[GetParam().row].name);
}

namespace {

std::vector<RowName> AllRowNames() {
  std::vector<RowName> rows;
#define KIND(name, libraryFile, factory, variable, needsDisplay) \
  rows.push_back({rows.size(), &variable});
#include "tests/support/kinds.def"
#undef KIND
  return rows;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Row, CatalogueName, testing::ValuesIn(AllRowNames()),
                         [](const auto& instance) { return std::to_string(instance.param.row); });

TEST(Catalogue, FailedAllocationAnywhereDestroysWhatWasBuilt) {
  const std::size_t aliveBefore = AllocationsAlive();
  std::size_t failed = 0;
  for (bool isBuilt = false; !isBuilt;) {
    FailAllocation(failed + 1);
    try {
      BuildProviderCatalogue();
      isBuilt = true;
    } catch (const std::bad_alloc&) {
      ++failed;
    }
    EXPECT_EQ(aliveBefore, AllocationsAlive()) << failed;
  }
  FailAllocation(0);
  EXPECT_LT(1U, failed);
}

TEST(NameVariables, HaveTheirExactValuesInTheLibrary) {
  const AggregatorLibrary library;
  for (const Kind& kind : AllKinds()) {
    EXPECT_EQ(kind.name, library.NameVariable(kind.variable)) << kind.variable;
  }
  EXPECT_STREQ("bio", library.NameVariable("rngBioWin"));
}
