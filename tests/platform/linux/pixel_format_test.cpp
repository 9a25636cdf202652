#include "platform/linux/pixel_format.h"

#include <array>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/bitmap_canvas.h"

namespace tavik::platform::x11 {
namespace {

using imaging::AlphaMode;
using Bytes = std::vector<std::uint8_t>;

std::shared_ptr<const std::uint8_t> shared(const Bytes& bytes) {
  const auto owner = std::make_shared<Bytes>(bytes);
  return {owner, owner->data()};
}

/// The bytes of all pixels, without gaps.
Bytes pixelsOf(const imaging::Bitmap& bitmap) {
  Bytes pixels;
  for (std::int64_t y = 0; y < bitmap.size.height; ++y) {
    const auto* const row = bitmap.pixels.get() + static_cast<std::size_t>(y) * bitmap.rowBytes;
    pixels.insert(pixels.end(), row, row + bitmap.size.width * 4);
  }
  return pixels;
}

constexpr PixelFormat kDepth24{
    .depth = 24, .bitsPerPixel = 32, .scanlinePad = 32, .redMask = 0xFF0000, .greenMask = 0xFF00, .blueMask = 0xFF};
constexpr PixelFormat kDepth16{
    .depth = 16, .bitsPerPixel = 16, .scanlinePad = 32, .redMask = 0xF800, .greenMask = 0x07E0, .blueMask = 0x001F};

PixelFormat with(PixelFormat format, void (*change)(PixelFormat&)) {
  change(format);
  return format;
}

TEST(PixelFormat, EveryLayoutBecomesTheSameBytes) {
  struct Row {
    const char* reason;
    PixelFormat format;
    Bytes bytes;  // of one pixel, padded to a row
    std::array<std::uint8_t, 3> blueGreenRed;
    AlphaMode alpha;
  };
  const std::vector<Row> rows{
      {"depth 24", kDepth24, {1, 2, 3, 99}, {1, 2, 3}, AlphaMode::opaque},
      {"depth 32", with(kDepth24, [](auto& f) { f.depth = 32; }), {1, 2, 3, 99}, {1, 2, 3}, AlphaMode::premultiplied},
      {"the other byte order",
       with(kDepth24, [](auto& f) { f.mostSignificantFirst = true; }),
       {99, 3, 2, 1},
       {1, 2, 3},
       AlphaMode::opaque},
      {"red last",
       with(kDepth24, [](auto& f) { std::swap(f.redMask, f.blueMask); }),
       {3, 2, 1, 99},
       {1, 2, 3},
       AlphaMode::opaque},
      {"packed", with(kDepth24, [](auto& f) { f.bitsPerPixel = 24; }), {1, 2, 3, 99}, {1, 2, 3}, AlphaMode::opaque},
      {"depth 30 loses two bits",
       with(kDepth24, [](auto& f) { f.depth = 30, f.redMask = 0x3FF00000, f.greenMask = 0xFFC00, f.blueMask = 0x3FF; }),
       {0xFF, 0x03, 0x48, 0x00},
       {255, 128, 1},
       AlphaMode::opaque},
      {"depth 16 reaches full white", kDepth16, {0xFF, 0xFF, 0, 0}, {255, 255, 255}, AlphaMode::opaque},
      {"depth 16 rounds", kDepth16, {0x21, 0x08, 0, 0}, {8, 4, 8}, AlphaMode::opaque},
  };
  for (const auto& [reason, format, bytes, blueGreenRed, alpha] : rows) {
    const auto bitmap = toBitmap(format, {1, 1}, shared(bytes), bytes.size());
    ASSERT_TRUE(bitmap) << reason;
    EXPECT_EQ(0, std::memcmp(bitmap->pixels.get(), blueGreenRed.data(), blueGreenRed.size())) << reason;
    EXPECT_EQ(bitmap->alpha, alpha) << reason;
  }
}

TEST(PixelFormat, OrdinaryPixelsAreNotCopied) {
  const auto bytes = shared(Bytes(8));
  EXPECT_EQ(toBitmap(kDepth24, {1, 2}, bytes, 8)->pixels.get(), bytes.get());
}

TEST(PixelFormat, AlphaSurvivesAConversion) {
  const auto format = with(kDepth24, [](auto& f) { f.depth = 32, f.mostSignificantFirst = true; });
  EXPECT_EQ(pixelsOf(*toBitmap(format, {1, 1}, shared({99, 3, 2, 1}), 4)), (Bytes{1, 2, 3, 99}));
}

TEST(PixelFormat, RowsArePadded) {
  const Bytes threeWide{0, 0, 0, 0, 0xFF, 0xFF, 9, 9, 0xFF, 0xFF, 0, 0, 0, 0, 9, 9};
  const auto pixels = pixelsOf(*toBitmap(kDepth16, {3, 2}, shared(threeWide), threeWide.size()));
  EXPECT_EQ((Bytes{pixels[0], pixels[4], pixels[8], pixels[12], pixels[16], pixels[20]}),
            (Bytes{0, 0, 255, 255, 0, 0}));
}

TEST(PixelFormat, RefusesWhatItCannotRead) {
  struct Row {
    const char* reason;
    PixelFormat format;
    PixelSize size;
    std::size_t byteCount;
  };
  const std::vector<Row> rows{
      {"too few bytes", kDepth24, {2, 2}, 15},
      {"too few bytes for the padding", kDepth16, {1, 1}, 2},
      {"no width", kDepth24, {0, 2}, 16},
      {"a size that overflows", kDepth24, {std::int64_t{1} << 62, 4}, 16},
      {"palette", {.depth = 8, .bitsPerPixel = 8, .scanlinePad = 32}, {1, 1}, 16},
      {"no red", with(kDepth24, [](auto& f) { f.redMask = 0; }), {1, 1}, 16},
      {"a mask with a gap", with(kDepth16, [](auto& f) { f.redMask = 0xA800; }), {1, 1}, 16},
      {"no such padding", with(kDepth24, [](auto& f) { f.scanlinePad = 0; }), {1, 1}, 16},
  };
  for (const auto& [reason, format, size, byteCount] : rows) {
    EXPECT_FALSE(toBitmap(format, size, shared(Bytes(16)), byteCount)) << reason;
  }
}

/// Two pixels side by side in the middle of rows with a gap.
imaging::Bitmap twoPixels() {
  return {.size = {2, 1}, .rowBytes = 12, .pixels = shared({1, 2, 3, 0, 4, 5, 6, 0, 9, 9, 9, 9})};
}

TEST(BitmapCanvas, PlacesAPictureOnBlack) {
  const auto picture = onBlack(twoPixels(), {3, 2}, 1, 1);
  ASSERT_TRUE(picture);
  EXPECT_EQ(pixelsOf(*picture), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(BitmapCanvas, NothingOutsideOfAShapeShows) {
  const auto picture = cutToShape(twoPixels(), {{1, 0, 5, 5}});
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->alpha, AlphaMode::premultiplied);
  EXPECT_EQ(pixelsOf(*picture), (Bytes{0, 0, 0, 0, 4, 5, 6, 255}));
}

}  // namespace
}  // namespace tavik::platform::x11
