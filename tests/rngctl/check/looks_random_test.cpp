#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <gmock/gmock.h>

using testing::ContainsRegex;

namespace {

json Judge(const std::string& options) { return Report("--only draws-look-random " + options); }

std::string Verdict(const json& report) { return Find(report, "draws-look-random").at("result"); }

}  // namespace

struct BadLook {
  std::string variant;
  std::string found;  // a regular expression: what chance decides may differ
  std::string fix;
  std::string alsoFailed = "";  // other checks of the drawn bytes
};

void PrintTo(const BadLook& look, std::ostream* stream) { *stream << look.variant; }

class CheckLook : public testing::TestWithParam<BadLook> {};

TEST_P(CheckLook, IsFoundAndExplained) {
  const json report = Report(
      "--only draw-fills-buffer,drawn-values,draws-differ,draws-look-random,concurrent-calls " +
      Breaking(GetParam().variant));
  ASSERT_EQ(GetParam().alsoFailed + "draws-look-random", Failed(report)) << report;
  EXPECT_THAT(Found(report, "draws-look-random"), ContainsRegex("^" + GetParam().found + "$"));
  EXPECT_EQ(GetParam().fix, Find(report, "draws-look-random").at("fix"));
}

constexpr char kFill[] =
    "Fill the whole buffer in each draw: ask the source again until it has returned as many bytes "
    "as requested.";
constexpr char kFillNew[] =
    "Fill the whole buffer with new bytes in each draw: the source may return fewer bytes than "
    "requested, or numbers that use only some of their bits.";
constexpr char kBits[] =
    "Return bytes in which every bit is random: if the source delivers fewer bits at a time, or "
    "biased ones, combine several values, for example with a hash function.";
constexpr char kSeed[] =
    "Seed any software generator with new bytes at each start, from a source such as getrandom().";

INSTANTIATE_TEST_SUITE_P(
    Each, CheckLook,
    testing::Values(
        BadLook{"ZeroHalf", "All seven draws of 16 bytes have zeros in bytes 9 to 16[.]", kFillNew},
        BadLook{"ZeroHalfOf32", "All seven draws of 32 bytes have zeros in bytes 17 to 32[.]",
                kFillNew},
        BadLook{"ZeroHalfOf4096",
                "All seven draws of 4096 bytes have zeros in bytes 2049 to 4096[.]", kFillNew},
        BadLook{"leaves_small_draws", "None of seven draws of 1 byte writes byte 1: the .*", kFill,
                "draw-fills-buffer "},
        BadLook{"leaves_draws_of_two", "None of seven draws of 2 bytes writes bytes 1 to 2: the .*",
                kFill},
        BadLook{"leaves_a_tail_of_1", "None of seven draws of 16 bytes writes byte 16: the .*",
                kFill, "draw-fills-buffer "},
        BadLook{"leaves_a_tail_of_2", "None of seven draws of 16 bytes writes bytes 15 to 16: .*",
                kFill, "draw-fills-buffer "},
        BadLook{"leaves_a_tail_of_3", "None of seven draws of 16 bytes writes bytes 14 to 16: .*",
                kFill, "draw-fills-buffer "},
        BadLook{"writes_nothing",
                "None of seven draws of 16 bytes writes bytes 1 to 16: the buffer still has its "
                "old contents there[.]",
                kFill, "draw-fills-buffer drawn-values draws-differ "},
        BadLook{"leaves_the_middle", "None of seven draws of 16 bytes writes bytes 6 to 11: .*",
                kFill, "draw-fills-buffer "},
        BadLook{"fills_only_the_beginning",
                "None of seven draws of 70000 bytes writes bytes 8193 to 70000: .*", kFill,
                "draw-fills-buffer "},
        BadLook{"RepeatBlock",
                "In the first draw of 32 bytes, bytes 17 to 32 repeat the 16 bytes before them[.]",
                "Take each byte from the source once, and let the draw fail if the source has "
                "nothing new.",
                "drawn-values "},
        BadLook{"WriteHex", "All 112 bytes of the draws of 16 bytes are printable ASCII .*",
                "Decode what the source sends as text, and return the bytes that it represents.",
                "drawn-values "},
        BadLook{"Count",
                "In the first draw of 16 bytes, bytes 1 to 10 are a counter: the difference from "
                "one byte to the next is always the same[.]",
                "Return bytes of the source instead of a counter or test pattern.",
                "draws-differ "},
        BadLook{"CountWords", "All seven draws of 16 bytes have zeros in bytes 2 to 4[.]", kFillNew,
                "draws-differ "},
        BadLook{"ClearTopBit",
                "In the 112 bytes of the draws of 16 bytes, the bit 0x80 is always 0[.]", kBits},
        BadLook{"SetBit3", "In the 112 bytes of the draws of 16 bytes, the bit 0x08 is always 1[.]",
                kBits},
        BadLook{"FavourBit5",
                "In the [0-9]+ bytes of the draws of [0-9]+ bytes, the bit 0x20 is 1 in "
                "[56][0-9][.][0-9] %[.]",
                kBits},
        BadLook{"OmitValue255",
                "In the [0-9]+ bytes of .*, the 256 values are not equally frequent: the rarest "
                "occurs 0 times, .*",
                "Do not map the source's values to bytes with a remainder, a scale factor or a "
                "table that favours some bytes, and do not drop any."},
        BadLook{"DrawPeriodically",
                "In the first draw of 70000 bytes, bytes [0-9]+ to [0-9]+ repeat bytes [0-9]+ to "
                "[0-9]+ of the [a-z]+ draw of [0-9]+ bytes[.]",
                "Never return the same bytes twice: use a source or generator without a short "
                "period, and take new bytes from it for each draw."},
        BadLook{"has_a_fixed_seed",
                "After a second start it repeats what it drew after the first: bytes 1 to 16 of "
                "the first draw of 16 bytes[.]",
                kSeed, "draws-differ "},
        BadLook{"RepeatLate",
                "After a second start it repeats what it drew after the first: bytes 1 to 16 of "
                "the first draw of 17 bytes[.]",
                kSeed},
        BadLook{"repeats_in_each_process",
                "In a second process it repeats what it drew in the first: bytes 1 to 16 of the "
                "first draw of 16 bytes[.]",
                kSeed}),
    [](const testing::TestParamInfo<BadLook>& look) { return look.param.variant; });

TEST(CheckLooks, ASourceWithFewBytesIsJudgedByThose) {
  EXPECT_EQ("passed", Verdict(Judge(Breaking("runs_out"))));
  EXPECT_EQ("passed", Verdict(Judge(Breaking("file_ends"))));
}

// Every seventh draw takes 0.4 s, so only the smaller draws fit into the time.
TEST(CheckLooks, ASlowSourceIsJudgedByWhatItGives) {
  EXPECT_EQ("passed", Verdict(Judge("--timeout 4 " + Breaking("sometimes_slow"))));
}

TEST(CheckLooks, ADrawThatWaitsEndsTheDrawing) {
  EXPECT_EQ("passed", Verdict(Judge("--timeout 2 " + Breaking("waits_now_and_then"))));
  const json user = Judge("--timeout 1 " + Breaking("waits_for_user"));
  EXPECT_EQ("a draw takes long, or waits for a user or a device",
            Reason(user, "draws-look-random"));
}

TEST(CheckLooks, WithoutDrawsNothingIsSaid) {
  EXPECT_EQ("Generate returns false", Reason(Judge(Breaking("draw_fails")), "draws-look-random"));
  EXPECT_EQ("it is not available here, so hosts never see it",
            Reason(Judge(Breaking("unavailable")), "draws-look-random"));
}

TEST(CheckLooks, GoodSourcesPassEachTime) {
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ("passed", Verdict(Judge(UNIXDEV_PLUGIN)));
    EXPECT_EQ("passed", Verdict(Judge(Breaking("correct"))));
  }
}
