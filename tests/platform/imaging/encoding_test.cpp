#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include <gtest/gtest.h>

#include "platform/imaging/pictures.h"

namespace tavik::platform::imaging {
namespace {

std::vector<std::byte> encoded(const Bitmap& bitmap, ImageType type, std::optional<double> quality = {}) {
  return makeImage(bitmap)->encoded(type, quality).value_or(std::vector<std::byte>{});
}

BGRA withAlpha(BGRA pixel, std::uint8_t alpha) { return {pixel[0], pixel[1], pixel[2], alpha}; }

BGRA opaqueNoise(int x, int y) { return withAlpha(noise(x, y), 255); }

std::uint8_t byte(double value) { return static_cast<std::uint8_t>(std::min(255.0, std::round(value))); }

BGRA anyColourAtAnyAlpha(int x, int y) { return {byte(x), byte(255 - x), 0, byte(y)}; }

BGRA straightened(int x, int y) {
  const auto divided = [y](int colour) { return y == 0 ? std::uint8_t{0} : byte(255.0 * colour / y); };
  return {divided(x), divided(255 - x), 0, byte(y)};
}

TEST(PNG, GivesEveryPixelBack) {
  using Case = std::tuple<std::string, AlphaMode, Painter, Painter, AlphaMode>;
  constexpr auto opaque = AlphaMode::opaque, premultiplied = AlphaMode::premultiplied;
  for (const auto& [reason, mode, paint, expected, expectedMode] : {
           Case{"padding of any value is no alpha", opaque, noise, opaqueNoise, opaque},
           Case{"alpha that hides nothing is not stored", premultiplied, opaqueNoise, opaqueNoise, opaque},
           Case{"colour is divided by its alpha", premultiplied, anyColourAtAnyAlpha, straightened, premultiplied},
       }) {
    const auto decoded = decodedPNG(encoded(painted({256, 256}, mode, paint), ImageType::png));
    ASSERT_TRUE(decoded) << reason;
    EXPECT_TRUE(decoded->size == (PixelSize{256, 256}) && decoded->alpha == expectedMode) << reason;
    EXPECT_EQ(worstDifference(*decoded, expected), 0) << reason;
  }
}

TEST(JPEG, ShowsThePictureOnBlackInFullColour) {
  const Painter expected = [](int x, int y) { return withAlpha(textLike(x, y), 255); };
  for (const AlphaMode mode : {AlphaMode::opaque, AlphaMode::premultiplied}) {
    const auto decoded = decodedJPEG(encoded(painted({160, 70}, mode, textLike), ImageType::jpeg, 1));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->size, (PixelSize{160, 70}));
    EXPECT_LE(worstDifference(*decoded, expected), 6);
  }
}

TEST(JPEG, GrowsWithQuality) {
  const Bitmap bitmap = painted({160, 70}, AlphaMode::opaque, textLike);
  const auto file = [&](std::optional<double> quality) { return encoded(bitmap, ImageType::jpeg, quality); };
  std::size_t smaller = 1;
  for (const double quality : {0.0, 0.3, 0.7, 0.85, 1.0}) {
    EXPECT_GT(file(quality).size(), smaller) << quality;
    smaller = file(quality).size();
  }
  EXPECT_EQ(file(-5), file(0));
  EXPECT_EQ(file(std::numeric_limits<double>::quiet_NaN()), file(0));
  EXPECT_EQ(file(std::numeric_limits<double>::infinity()), file(1));
  EXPECT_EQ(file(std::nullopt), file(0.75));
}

TEST(JPEG, HasNoRoomForTheLongestPictures) {
  const Bitmap bitmap = painted({65501, 1}, AlphaMode::opaque, noise);
  EXPECT_TRUE(encoded(bitmap, ImageType::jpeg).empty());
  EXPECT_TRUE(decodedPNG(encoded(bitmap, ImageType::png)));
}

}  // namespace
}  // namespace tavik::platform::imaging
