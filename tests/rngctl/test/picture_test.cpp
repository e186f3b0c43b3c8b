// The picture of "rngctl test", as another program reads it.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <png.h>

namespace fs = std::filesystem;

namespace {

constexpr unsigned kWidth = 1040;
constexpr unsigned kHeight = 512;

struct Colour {
  unsigned red;
  unsigned green;
  unsigned blue;

  bool operator==(const Colour&) const = default;
};

class DecodedPicture {
 public:
  explicit DecodedPicture(const std::string& file) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(0, png_image_begin_read_from_file(&image, file.c_str())) << image.message;
    EXPECT_EQ(kWidth, image.width);
    EXPECT_EQ(kHeight, image.height);
    image.format = PNG_FORMAT_RGB;
    pixels.resize(PNG_IMAGE_SIZE(image));
    EXPECT_NE(0, png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr))
        << image.message;
  }

  Colour At(unsigned column, unsigned line) const {
    const unsigned char* const pixel = &pixels.at(3UL * (line * kWidth + column));
    return {pixel[0], pixel[1], pixel[2]};
  }

  // The part for a byte, and that for a byte and the next one.
  Colour ByteAt(unsigned place) const { return At(place % 256 * 2, place / 256 * 2); }
  Colour PairAt(unsigned byte, unsigned next) const { return At(528 + byte * 2, next * 2); }

 private:
  std::vector<unsigned char> pixels;
};

Colour Grey(unsigned value) { return {value, value, value}; }

DecodedPicture Paint(const std::string& arguments) {
  const std::string file = TreePath("picture.png");
  RunShell(Rngctl() + " test " + arguments + " --restarts 0 --picture " + file);
  return DecodedPicture(file);
}

}  // namespace

TEST_F(RngctlTest, ThePictureOfACounterLooksLikeACounter) {
  InstallPlugin("dsdr", "drawing/Counter");
  const DecodedPicture picture = Paint("dsdr -n 131072");
  for (unsigned place = 0; place < 65536; place += 97) {
    EXPECT_EQ(Grey(place % 256), picture.ByteAt(place)) << place;
  }
  // Each byte is followed by the next number, and by no other.
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (unsigned next = 0; next < 256; next += 5) {
      EXPECT_EQ(next == (byte + 1) % 256 ? Grey(255) : Grey(105), picture.PairAt(byte, next))
          << byte << ' ' << next;
    }
  }
  for (const unsigned line : {0U, 511U}) {
    EXPECT_EQ(Grey(255), picture.At(512, line));  // the gap
    EXPECT_EQ(Grey(255), picture.At(527, line));
  }
}

TEST_F(RngctlTest, ThePictureOfAGoodGeneratorIsNoise) {
  const DecodedPicture picture = Paint("unixdev -n 6553600");
  unsigned sum = 0;
  unsigned usual = 0;  // within three standard deviations
  for (unsigned place = 0; place < 65536; ++place) {
    sum += picture.ByteAt(place).red;
    const unsigned pair = picture.PairAt(place % 256, place / 256).red;
    usual += pair > 128 - 48 && pair < 128 + 48;
  }
  EXPECT_NEAR(127.5, sum / 65536.0, 3);
  EXPECT_GT(usual, 65000U);
}

TEST_F(RngctlTest, ThePictureShowsWhereNoBytesAre) {
  const DecodedPicture picture = Paint("unixdev -n 300");
  EXPECT_EQ(picture.ByteAt(299).red, picture.ByteAt(299).blue);
  EXPECT_EQ((Colour{200, 220, 255}), picture.ByteAt(300));
  EXPECT_EQ((Colour{200, 220, 255}), picture.ByteAt(65535));
}

TEST_F(RngctlTest, ThePictureBelongsToTheUserAndIsWrittenWithABadVerdictToo) {
  InstallPlugin("dsdr", "drawing/Constant");
  WriteFile(TreePath("picture.png"), "old");
  const Result result = Run("test dsdr -n 1000 --picture " + TreePath("picture.png"));
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write,
            fs::status(TreePath("picture.png")).permissions());
  EXPECT_EQ(Grey(0xA5), DecodedPicture(TreePath("picture.png")).ByteAt(0));
}
