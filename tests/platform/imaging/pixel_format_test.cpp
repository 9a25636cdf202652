#include "platform/imaging/pixel_format.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/imaging/bitmap_canvas.h"

namespace tavik::platform::imaging {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::shared_ptr<const std::uint8_t> shared(const Bytes& bytes) {
  const auto owner = std::make_shared<Bytes>(bytes);
  return {owner, owner->data()};
}

/// The bytes of all pixels, without gaps.
Bytes pixelsOf(const Bitmap& bitmap) {
  Bytes pixels;
  for (std::int64_t y = 0; y < bitmap.size.height; ++y) {
    const auto* const row = bitmap.pixels.get() + static_cast<std::size_t>(y) * bitmap.rowBytes;
    pixels.insert(pixels.end(), row, row + bitmap.size.width * 4);
  }
  return pixels;
}

// Depth, bits per pixel, pad, byte order, masks of red, green and blue.
constexpr PixelFormat kDepth24{24, 32, 32, false, 0xFF0000, 0xFF00, 0xFF};
constexpr PixelFormat kDepth32{32, 32, 32, false, 0xFF0000, 0xFF00, 0xFF};
constexpr PixelFormat kDepth16{16, 16, 32, false, 0xF800, 0x07E0, 0x001F};

TEST(PixelFormat, EveryLayoutBecomesTheSameBytes) {
  const struct Case {
    std::string reason;
    PixelFormat format;
    Bytes bytes, pixel;
  } cases[] = {
      {"depth 24, as it is", kDepth24, {1, 2, 3, 99}, {1, 2, 3, 99}},
      {"with alpha, as it is", kDepth32, {1, 2, 3, 99}, {1, 2, 3, 99}},
      {"the other byte order", {24, 32, 32, true, 0xFF0000, 0xFF00, 0xFF}, {99, 3, 2, 1}, {1, 2, 3, 255}},
      {"and with alpha", {32, 32, 32, true, 0xFF0000, 0xFF00, 0xFF}, {99, 3, 2, 1}, {1, 2, 3, 99}},
      {"red last", {24, 32, 32, false, 0xFF, 0xFF00, 0xFF0000}, {3, 2, 1, 99}, {1, 2, 3, 255}},
      {"packed", {24, 24, 32, false, 0xFF0000, 0xFF00, 0xFF}, {1, 2, 3, 99}, {1, 2, 3, 255}},
      {"depth 30", {30, 32, 32, false, 0x3FF00000, 0xFFC00, 0x3FF}, {0xFF, 0x03, 0x48, 0x00}, {255, 128, 1, 255}},
      {"depth 16 reaches full white", kDepth16, {0xFF, 0xFF, 0, 0}, {255, 255, 255, 255}},
      {"depth 16 rounds", kDepth16, {0x21, 0x08, 0, 0}, {8, 4, 8, 255}},
  };
  for (const auto& [reason, format, bytes, pixel] : cases) {
    const auto bitmap = toBitmap(format, {1, 1}, shared(bytes), bytes.size());
    ASSERT_TRUE(bitmap) << reason;
    EXPECT_EQ(pixelsOf(*bitmap), pixel) << reason;
    EXPECT_EQ(bitmap->alpha, format.depth == 32 ? AlphaMode::premultiplied : AlphaMode::opaque) << reason;
  }
}

TEST(PixelFormat, OrdinaryPixelsAreNotCopied) {
  const auto bytes = shared(Bytes(8));
  for (const auto& format : {kDepth24, kDepth32}) EXPECT_EQ(toBitmap(format, {1, 2}, bytes, 8)->pixels, bytes);
}

TEST(PixelFormat, RowsArePadded) {
  const Bytes threeWide{0, 0, 0, 0, 0xFF, 0xFF, 9, 9, 0xFF, 0xFF, 0, 0, 0, 0, 9, 9};
  const auto pixels = pixelsOf(toBitmap(kDepth16, {3, 2}, shared(threeWide), threeWide.size()).value());
  for (const std::size_t i : {0U, 1U, 2U, 3U, 4U, 5U}) EXPECT_EQ(pixels[4 * i], i == 2 || i == 3 ? 255 : 0) << i;
}

TEST(PixelFormat, RefusesWhatItCannotRead) {
  const struct Case {
    std::string reason;
    PixelFormat format;
    PixelSize size;
    std::size_t byteCount;
  } cases[] = {
      {"too few bytes", kDepth24, {2, 2}, 15},
      {"too few bytes for the padding", kDepth16, {1, 1}, 2},
      {"a size that overflows", kDepth24, {std::int64_t{1} << 62, 4}, 16},
      {"palette", {8, 8, 32, false, 0xE0, 0x1C, 0x03}, {1, 1}, 16},
      {"no red", {24, 32, 32, false, 0, 0xFF00, 0xFF}, {1, 1}, 16},
      {"a mask with a gap", {16, 16, 32, false, 0xA800, 0x07E0, 0x001F}, {1, 1}, 16},
      {"no such padding", {24, 32, 0, false, 0xFF0000, 0xFF00, 0xFF}, {1, 1}, 16},
  };
  for (const auto& [reason, format, size, byteCount] : cases) {
    EXPECT_FALSE(toBitmap(format, size, shared(Bytes(16)), byteCount)) << reason;
  }
}

TEST(BitmapCanvas, PlacesAPictureOnBlackOrCutsItToAShape) {
  // Two pixels side by side in a row with a gap.
  const Bitmap two{.size = {2, 1}, .rowBytes = 12, .pixels = shared({1, 2, 3, 0, 4, 5, 6, 0, 9, 9, 9, 9})};
  const auto placed = pixelsOf(onBlack(two, {3, 2}, 1, 1).value());
  EXPECT_EQ(placed, (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 0, 4, 5, 6, 0}));
  const auto cut = cutToShape(two, {{1, 0, 5, 5}}).value();
  EXPECT_EQ(cut.alpha, AlphaMode::premultiplied);
  EXPECT_EQ(pixelsOf(cut), (Bytes{0, 0, 0, 0, 4, 5, 6, 255})) << "nothing outside of the shape shows";
}

}  // namespace
}  // namespace tavik::platform::imaging
