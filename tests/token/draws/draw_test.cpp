#include "tests/support/tree.h"
#include "tests/token/token_host.h"

#include <gmock/gmock.h>
#include <numeric>
#include <p11-kit/pkcs11.h>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;

namespace {

class TokenDraw : public TokenHost {
 protected:
  // The pieces of one draw of that many bytes.
  std::vector<unsigned long> PiecesOf(std::size_t size) {
    tokens.ClearLog();
    EXPECT_EQ("drawn", Draw(size));
    const auto pieces = tokens.Pieces();
    EXPECT_EQ(size, std::accumulate(pieces.begin(), pieces.end(), std::size_t{0}));
    return pieces;
  }
};

class TokenDrawSizes : public TokenDraw, public testing::WithParamInterface<std::size_t> {};

class TokenDrawRefusals : public TokenDraw, public testing::WithParamInterface<unsigned long> {};

}  // namespace

TEST_P(TokenDrawSizes, FillTheWholeBuffer) {
  Start({"slot id=0"});
  const auto pieces = PiecesOf(GetParam());
  EXPECT_THAT(pieces, Each(Le(256U)));
  EXPECT_EQ((GetParam() + 255) / 256, pieces.size());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

INSTANTIATE_TEST_SUITE_P(Of, TokenDrawSizes, testing::Values(1, 32, 255, 256, 257, 4096, 1 << 20));

TEST_F(TokenDraw, ZeroBytesSucceedsAndAsksNoToken) {
  Start({"slot id=0"});
  tokens.ClearLog();
  EXPECT_TRUE(rng->Generate(nullptr, 0));
  EXPECT_THAT(tokens.Log(), IsEmpty());
}

TEST_P(TokenDrawRefusals, MakePiecesSmaller) {
  Start({"slot id=0 largest=48 refusal=" + std::to_string(GetParam())});
  EXPECT_THAT(PiecesOf(100), Each(Le(48U)));
  EXPECT_EQ("drawn", Draw(1000));
}

INSTANTIATE_TEST_SUITE_P(With, TokenDrawRefusals,
                         testing::Values(CKR_DATA_LEN_RANGE, CKR_DEVICE_ERROR, CKR_ARGUMENTS_BAD,
                                         CKR_FUNCTION_FAILED, CKR_GENERAL_ERROR,
                                         CKR_DEVICE_MEMORY));

TEST_F(TokenDraw, PiecesAreHalvedDownToTheLastByte) {
  Start({"slot id=0 largest=1"});
  EXPECT_THAT(PiecesOf(20), Each(1U));
  tokens.Set({"slot id=0 largest=0"});
  EXPECT_EQ("zeros", Draw(20));
}

// An alarm lasts until a self-test passes.
TEST_F(TokenDraw, HalfZerosIsAFailedDraw) {
  Start({"slot id=0"});
  for (const std::size_t size : {32, 256, 257, 4096}) {
    tokens.Set({"slot id=0 zeros=half"});
    EXPECT_EQ("zeros", Draw(size));
    EXPECT_FALSE(rng->SelfTest());
    tokens.Set({"slot id=0"});
    EXPECT_EQ("zeros", Draw(size));
    EXPECT_TRUE(rng->SelectDevice(""));  // which tests nothing
    EXPECT_EQ("zeros", Draw(size));
    EXPECT_TRUE(rng->SelfTest());
    EXPECT_EQ("drawn", Draw(size));
  }
}

TEST_F(TokenDraw, NeverLogsIn) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0 pin=yes"});
  EXPECT_EQ("zeros", Draw());
  tokens.Set({"slot id=0"});
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.Count("C_Login"));
}

TEST_F(TokenDraw, TokenWithoutAFreeSessionFailsUntilOneIsFree) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0 sessions=0"});
  EXPECT_EQ("zeros", Draw());
  tokens.Set({"slot id=0 sessions=1"});
  EXPECT_EQ("drawn", Draw());
}
