// Rows that the built-in catalogue does not have.

#include "aggregator/load_provider.h"

#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <gtest/gtest.h>

// What an empty file name would find, since the loader takes it for the program.
extern "C" __attribute__((visibility("default"))) IRngProvider* GetProgramRng() {
  RecordCall("program", "factory");
  return nullptr;
}

class LoadProviderTest : public testing::Test {
 protected:
  RngInfoVector providers;
};

TEST_F(LoadProviderTest, RowWithoutALibraryFileIsPassedOverBeforeTheProbe) {
  LoadProvider({"dsdr", "", "GetProgramRng", false}, nullptr, providers);
  EXPECT_EQ("", CallLog());
  EXPECT_TRUE(providers.empty());
}

TEST_F(LoadProviderTest, AnyOtherRowIsProbedEvenIfItsLibraryIsAbsent) {
  LoadProvider({"dsdr", "librngabsent.so", "GetProgramRng", false}, nullptr, providers);
  EXPECT_EQ("x11.opened x11.XOpenDisplay x11.closed", CallLog());
  EXPECT_TRUE(providers.empty());
}

TEST_F(LoadProviderTest, FactoryIsLookedUpUnderTheRowsName) {
  InstallPlugin("dsdr");
  LoadProvider({"anything", "librngdsdr.so", "GetAccordRng", false}, nullptr, providers);
  EXPECT_TRUE(providers.empty());
  LoadProvider({"anything", "librngdsdr.so", "GetDsdrRng", false}, nullptr, providers);
  ASSERT_EQ(1U, providers.size());
  EXPECT_EQ(Fake("dsdr").provider, providers.front().provider);
}
