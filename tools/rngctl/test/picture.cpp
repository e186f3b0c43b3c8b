#include "tools/rngctl/test/picture.h"

#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cmath>
#include <png.h>

void Picture::Feed(const char* bytes, std::size_t size) {
  const std::size_t shown = std::min(size, kSide * kSide - first.size());
  first.insert(first.end(), bytes, bytes + shown);
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (count > 0) ++pairs[byte * kSide + last];
    last = byte;
    ++count;
  }
}

Picture::Pixel Picture::ByteAt(std::size_t line, std::size_t column) const {
  constexpr Pixel kBlue = {200, 220, 255};
  const std::size_t place = line * kSide + column;
  if (place >= first.size()) return kBlue;
  const auto grey = static_cast<unsigned char>(first[place]);
  return {grey, grey, grey};
}

Picture::Pixel Picture::PairAt(std::size_t line, std::size_t column) const {
  const double mean = static_cast<double>(std::max<std::uint64_t>(count, 2) - 1) / (kSide * kSide);
  const double deviations =
      (static_cast<double>(pairs[line * kSide + column]) - mean) / std::sqrt(mean);
  const auto grey = static_cast<unsigned char>(std::clamp(128 + 16 * deviations, 0.0, 255.0));
  return {grey, grey, grey};
}

Picture::Pixel Picture::PixelAt(std::size_t line, std::size_t column) const {
  constexpr Pixel kWhite = {255, 255, 255};
  if (column < kHeight) return ByteAt(line / kScale, column / kScale);
  if (column < kHeight + kGap) return kWhite;
  return PairAt(line / kScale, (column - kHeight - kGap) / kScale);
}

SecretBytes Picture::AsPng() const {
  SecretBytes pixels;
  pixels.reserve(kWidth * kHeight * sizeof(Pixel));
  for (std::size_t line = 0; line < kHeight; ++line) {
    for (std::size_t column = 0; column < kWidth; ++column) {
      const Pixel pixel = PixelAt(line, column);
      for (const unsigned char part : {pixel.red, pixel.green, pixel.blue}) {
        pixels.push_back(static_cast<char>(part));
      }
    }
  }
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = kWidth;
  image.height = kHeight;
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  SecretBytes file(size);
  if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr) == 0) {
    throw Refusal(kNothingUsable, std::string("Cannot encode the picture: ") + image.message + ".");
  }
  file.resize(size);
  return file;
}
