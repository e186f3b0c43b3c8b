#include "tools/rngctl/loader/error.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

TEST(LoaderError, NamesTheFileThatIsMissing) {
  ASSERT_FALSE(::dlopen("librngnowhere.so", RTLD_LAZY));
  const LoaderError error = ParseLoaderError(::dlerror());
  EXPECT_EQ("librngnowhere.so", error.missingFile);
  EXPECT_EQ("", error.undefinedSymbol);
  EXPECT_EQ(0U, error.words.find("librngnowhere.so: cannot open"));
}

TEST(LoaderError, NamesTheSymbolThatIsUndefined) {
  const LoaderError error = ParseLoaderError("/x/librngdsdr.so: undefined symbol: AskDevice");
  EXPECT_EQ("AskDevice", error.undefinedSymbol);
  EXPECT_EQ("", error.missingFile);
  const LoaderError versioned =
      ParseLoaderError("/x/a.so: undefined symbol: AskDevice, version V_1");
  EXPECT_EQ("AskDevice", versioned.undefinedSymbol);
}

TEST(LoaderError, KeepsOtherWords) {
  const LoaderError error = ParseLoaderError("/x/librngdsdr.so: file too short");
  EXPECT_EQ("/x/librngdsdr.so: file too short", error.words);
  EXPECT_EQ("", error.missingFile);
  EXPECT_EQ("", error.undefinedSymbol);
}
