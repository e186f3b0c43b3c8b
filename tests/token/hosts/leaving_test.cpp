// What a stop leaves in the process.

#include "tests/support/open_files.h"
#include "tests/token/token_host.h"

#include <malloc.h>

namespace {

constexpr int kWarmUp = 1000;  // until the caches of the loader and of p11-kit have filled up
constexpr int kCycles = 200;

class TokenLeaving : public TokenHost {
 protected:
  // The bytes that stay allocated after many runs of the work.
  template <class Work>
  static std::ptrdiff_t GrowthOf(const Work& work) {
    for (int i = 0; i < kWarmUp; ++i) work();
    const std::size_t before = ::mallinfo2().uordblks;
    for (int i = 0; i < kCycles; ++i) work();
    return static_cast<std::ptrdiff_t>(::mallinfo2().uordblks) -
           static_cast<std::ptrdiff_t>(before);
  }
};

}  // namespace

TEST_F(TokenLeaving, UnmapsPluginAndModule) {
  Start({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_TRUE(IsMapped("librngrutoken.so"));
  EXPECT_TRUE(IsMapped("libmock_module.so"));
  Stop();
  EXPECT_FALSE(IsMapped("librngrutoken.so"));
  EXPECT_FALSE(IsMapped("libmock_module.so"));
  EXPECT_EQ(1U, tokens.Count("C_Finalize"));
  EXPECT_EQ("C_Finalize", tokens.Log().back().function);
}

TEST_F(TokenLeaving, KeepsNoDescriptorsAndNoMemory) {
  tokens.Set({"slot id=0"});
  const std::ptrdiff_t before = CountOpenFiles();
  const std::ptrdiff_t growth = GrowthOf([this] {
    library->Initialize(nullptr);
    rng = library->GetRng("Rutoken");
    ASSERT_NE(nullptr, rng);
    ASSERT_TRUE(rng->SelectDevice("A1"));
    ASSERT_EQ("drawn", Draw());
    library->ShutDown();
  });
  EXPECT_EQ(before, CountOpenFiles());
  EXPECT_LE(growth, 1024);
}

TEST_F(TokenLeaving, KeepsNothingOfRepeatedSelections) {
  Start({"slot id=0"});
  EXPECT_LE(GrowthOf([this] {
              EXPECT_TRUE(rng->SelectDevice("A1"));
              EXPECT_TRUE(rng->SelectDevice(""));
            }),
            1024);
}

TEST_F(TokenLeaving, KeepsNothingOfFailedDraws) {
  Start({"slot id=0"});
  tokens.Set("");
  const std::ptrdiff_t before = CountOpenFiles();
  EXPECT_LE(GrowthOf([this] { EXPECT_EQ("zeros", Draw()); }), 1024);
  EXPECT_EQ(before, CountOpenFiles());
}
