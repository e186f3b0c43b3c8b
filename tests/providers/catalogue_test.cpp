#include "providers/catalogue.h"

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"

#include <gmock/gmock.h>
#include <map>
#include <new>
#include <ostream>

using testing::ElementsAre;
using testing::FieldsAre;

TEST(Catalogue, HasExactlyTheseRowsInThisOrder) {
  EXPECT_THAT(
      BuildProviderCatalogue(),
      ElementsAre(FieldsAre("bioqt", "librngbioqt.so", "GetBioQtRng", true),
                  FieldsAre("unixx11", "librngbiox11.so", "GetBioX11Rng", true),
                  FieldsAre("dsdr", "librngdsdr.so", "GetDsdrRng", false),
                  FieldsAre("accord", "librngaccord.so", "GetAccordRng", false),
                  FieldsAre("sobol", "librngsobol.so", "GetSobolRng", false),
                  FieldsAre("JacartaGost", "librngjacartagost.so", "GetJacartaGostRng", false),
                  FieldsAre("Rutoken", "librngrutoken.so", "GetRuTokenRng", false),
                  FieldsAre("EsmartGost", "librngesmartgost.so", "GetEsmartGostRng", false),
                  FieldsAre("biokbd", "librngbiokb.so", "GetBioKbRng", false),
                  FieldsAre("unixdev", "librngunixdev.so", "GetUnixDevRng", false),
                  FieldsAre("grandmaster", "librnggrandmaster.so", "GetGrandmasterRng", false),
                  FieldsAre("biocore", "librngbiocore.so", "GetBioCoreRng", false)));
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

INSTANTIATE_TEST_SUITE_P(Row, CatalogueName,
                         testing::Values(RowName{0, &rngBioQt}, RowName{1, &rngBioX11},
                                         RowName{2, &rngDsdr}, RowName{3, &rngAccord},
                                         RowName{4, &rngSobol}, RowName{5, &rngJacartaGost},
                                         RowName{6, &rngRuToken}, RowName{7, &rngEsmartGost},
                                         RowName{8, &rngBioKb}, RowName{9, &rngUnixDev},
                                         RowName{10, &rngGrandmaster}, RowName{11, &rngBioCore}),
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
  const std::map<std::string, std::string> values = {{"rngBioCore", "biocore"},
                                                     {"rngBioX11", "unixx11"},
                                                     {"rngUnixDev", "unixdev"},
                                                     {"rngBioKb", "biokbd"},
                                                     {"rngGrandmaster", "grandmaster"},
                                                     {"rngDsdr", "dsdr"},
                                                     {"rngEsmartGost", "EsmartGost"},
                                                     {"rngRuToken", "Rutoken"},
                                                     {"rngJacartaGost", "JacartaGost"},
                                                     {"rngSobol", "sobol"},
                                                     {"rngAccord", "accord"},
                                                     {"rngBioQt", "bioqt"},
                                                     {"rngBioWin", "bio"}};
  const AggregatorLibrary library;
  for (const auto& [variable, value] : values) {
    EXPECT_EQ(value, library.NameVariable(variable)) << variable;
  }
}
