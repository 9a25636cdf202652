#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <new>
#include <numbers>
#include <utility>

#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>

#include "platform/imaging/banded_picture.h"
#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/bitmap_row.h"
#include "platform/imaging/orientation.h"
#include "platform/imaging/pixel_format.h"
#include "platform/imaging/scaled_rows.h"
#include "table.h"

namespace {

constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();
std::size_t largestBlock = kUnlimited;  ///< that `new` hands out

}  // namespace

void* operator new(std::size_t size) {
  void* block = size > largestBlock ? nullptr : std::malloc(size);
  return block ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace tavik::platform::imaging {
namespace {

/// The bytes of one pixel.
using BGRA = std::array<std::uint8_t, 4>;
using Painter = std::function<BGRA(int x, int y)>;

using Bytes = std::vector<std::uint8_t>;

std::shared_ptr<const std::uint8_t> shared(Bytes bytes) {
  const auto owner = std::make_shared<const Bytes>(std::move(bytes));
  return {owner, owner->data()};
}

Bitmap bitmapOf(PixelSize size, AlphaMode alpha, Bytes bytes) {
  const std::size_t rowBytes = bytes.size() / static_cast<std::size_t>(size.height);
  return {size, rowBytes, alpha, shared(std::move(bytes))};
}

/// Some colour and alpha, always the same for one place, unlike its neighbours'.
BGRA noise(int x, int y) {
  std::uint32_t bits = (static_cast<std::uint32_t>(x) * 0x9E3779B1U) ^ (static_cast<std::uint32_t>(y) * 0x85EBCA77U);
  bits = (bits ^ (bits >> 15U)) * 0xC2B2AE3DU;
  return std::bit_cast<BGRA>((bits ^ (bits >> 13U)) * 0x27D4EB2FU);
}

/// Lines of small coloured glyphs on white, with alpha 0.
BGRA textLike(int x, int y) {
  const bool ink = y % 14 < 9 && x % 8 < 6 && noise(x / 2, y / 3)[0] > 128;
  return ink ? BGRA{0xC0, 0x20, noise(x / 80, y / 14)[0], 0} : BGRA{0xFF, 0xFF, 0xFF, 0};
}

/// What `paint` gives, in rows with some bytes of something else behind them.
Bitmap painted(PixelSize size, AlphaMode alpha, const Painter& paint) {
  Bytes bytes;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) std::ranges::copy(paint(x, y), std::back_inserter(bytes));
    bytes.insert(bytes.end(), 12, 0xA5);
  }
  return bitmapOf(size, alpha, std::move(bytes));
}

BGRA pixelOf(const Bitmap& bitmap, int x, int y) {
  return std::bit_cast<BGRA>(readPixel(rowOf(bitmap, static_cast<std::size_t>(y)), static_cast<std::size_t>(x)));
}

/// The greatest difference of any component of any pixel from what `expected` gives.
int worstDifference(const Bitmap& bitmap, const Painter& expected) {
  const auto width = static_cast<int>(bitmap.size.width);
  int worst = 0;
  for (int place = 0; place < width * bitmap.size.height; ++place) {
    const BGRA pixel = pixelOf(bitmap, place % width, place / width), wanted = expected(place % width, place / width);
    for (std::size_t i = 0; i < 4; ++i) worst = std::max(worst, std::abs(pixel[i] - wanted[i]));
  }
  return worst;
}

/// A file as straight, not premultiplied, pixels. The alpha mode says whether the file has alpha; 255 where it has
/// none.
std::optional<Bitmap> decodedPNG(const std::vector<std::byte>& file) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return std::nullopt;
  const bool hasAlpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
  image.format = PNG_FORMAT_BGRA;
  Bytes bytes(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr)) return std::nullopt;
  return bitmapOf({image.width, image.height}, hasAlpha ? AlphaMode::premultiplied : AlphaMode::opaque,
                  std::move(bytes));
}

std::optional<Bitmap> decodedJPEG(const std::vector<std::byte>& file) {
  const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
  const auto* source = reinterpret_cast<const unsigned char*>(file.data());
  int width = 0, height = 0, subsampling = 0, space = 0;
  tjDecompressHeader3(decoder.get(), source, file.size(), &width, &height, &subsampling, &space);
  Bytes bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * sizeof(BGRA));
  const int failure = tjDecompress2(decoder.get(), source, file.size(), bytes.data(), width, 0, height, TJPF_BGRA, 0);
  return failure == 0 ? std::optional(bitmapOf({width, height}, AlphaMode::opaque, std::move(bytes))) : std::nullopt;
}

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max(), kLowest = -kHuge - 1;

TEST(PictureImage, IsNotMadeOfPixelsThatAreNotThere) {
  const Bitmap sound = painted({8, 4}, AlphaMode::opaque, noise);
  EXPECT_FALSE(makeImage({{8, 4}, 32, AlphaMode::opaque, nullptr})) << "no pixels";
  for (const auto& [reason, size, rowBytes] : Table<PixelSize, std::size_t>{
           {"no width", {0, 4}, 32},
           {"negative height", {8, kLowest}, 32},
           {"too wide", {65536, 1}, std::size_t{4} * 65536},
           {"the width's bytes overflow", {kHuge, 1}, 32},
           {"rows cannot hold the width", {8, 4}, 31},
           {"rows times height overflow", {8, 4}, kUnlimited / 3},
       }) {
    EXPECT_FALSE(makeImage({size, rowBytes, AlphaMode::opaque, sound.pixels})) << reason;
  }
}

TEST(PictureImage, IsRedrawnAtEverySizeThatABitmapCanHave) {
  const ImageRef image = makeImage(painted({8, 4}, AlphaMode::opaque, noise));
  for (const PixelSize size : {PixelSize{5, 3}, {65535, 1}}) EXPECT_EQ(image->resized(size)->size(), size);
  for (const PixelSize size : {PixelSize{5, 0}, {-5, 3}, {kLowest, kLowest}, {1, 65536}, {kHuge, kHuge}}) {
    EXPECT_FALSE(image->resized(size)) << size.width << " x " << size.height;
  }
  EXPECT_FALSE(image->resized({65535, 65535})) << "valid sides, but 16 GiB";
}

TEST(PictureImage, GivesNothingWhenMemoryRunsOut) {
  const ImageRef image = makeImage(painted({200, 200}, AlphaMode::premultiplied, noise));
  const auto answers = [&](std::size_t limit) {
    largestBlock = limit;
    const ImageRef smaller = image->resized({190, 190});
    const std::array done{smaller && smaller->resized({9, 9}), smaller && smaller->encoded(ImageType::png, {}),
                          smaller && smaller->encoded(ImageType::jpeg, 1.0),
                          image->encoded(ImageType::png, {}).has_value(),
                          image->encoded(ImageType::jpeg, 1.0).has_value()};
    largestBlock = kUnlimited;
    return done;
  };
  EXPECT_EQ(answers(kUnlimited), (std::array{true, true, true, true, true}));
  EXPECT_EQ(answers(16384), (std::array<bool, 5>{}));
  EXPECT_EQ(answers(512), (std::array<bool, 5>{})) << "not even a row";
}

/// Empty when it fails.
std::vector<std::byte> encoded(const ImageRef& image, ImageType type, std::optional<double> quality = {}) {
  return image->encoded(type, quality).value_or(std::vector<std::byte>{});
}

Bitmap scaledBitmap(const Bitmap& bitmap, PixelSize size) { return scaled(banded(bitmap), size).value(); }

/// The picture in bands of so many rows in memory of their own. Counts the rows that are kept, and the most that were.
/// Those from row `end` on cannot be had.
struct InBands {
  Bitmap bitmap;
  std::int64_t bandRows = 1;
  std::int64_t end = bitmap.size.height;
  std::int64_t kept = 0, most = 0;

  BandedPicture picture() {
    return {bitmap.size, bitmap.alpha, [this]() -> NextBand {
              return [this, y = std::int64_t{0}]() mutable {
                const auto first = std::exchange(y, y + bandRows);
                return first < end ? std::optional(band(first, std::min(bandRows, end - first))) : std::nullopt;
              };
            }};
  }

  Bitmap band(std::int64_t first, std::int64_t count) {
    const auto bytes = static_cast<std::size_t>(count) * bitmap.rowBytes;
    auto* const rows = new std::uint8_t[bytes];
    std::copy_n(rowOf(bitmap, static_cast<std::size_t>(first)), bytes, rows);
    most = std::max(most, kept += count);
    const auto release = [this, count](const std::uint8_t* pixels) {
      kept -= count;
      delete[] pixels;
    };
    return {{bitmap.size.width, count}, bitmap.rowBytes, bitmap.alpha, std::shared_ptr<std::uint8_t>(rows, release)};
  }
};

TEST(PictureImage, IsTheSameInBandsOfWhichFewAreKept) {
  constexpr std::int64_t kHeight = 900;
  constexpr auto kOpaque = AlphaMode::opaque, kPremultiplied = AlphaMode::premultiplied;
  const struct Case {
    std::int64_t bandRows;
    AlphaMode mode;
    PixelSize size;
    std::int64_t mostKept, end;
  } cases[] = {
      {1, kOpaque, {301, 900}, 90, 899},   {7, kPremultiplied, {300, 430}, 190, 0},
      {64, kOpaque, {100, 301}, 350, 850}, {899, kPremultiplied, {90, 33}, 900, 899},
      {900, kOpaque, {1, 1}, 900, 0},
  };
  for (const auto& [bandRows, mode, size, mostKept, end] : cases) {
    InBands bands{painted({301, kHeight}, mode, noise), bandRows};
    const auto image = makeImage(bands.picture()), whole = makeImage(bands.bitmap);
    for (const ImageType type : {ImageType::jpeg, ImageType::png}) {
      bands.most = 0;
      EXPECT_EQ(encoded(image, type), encoded(whole, type)) << bandRows;
      EXPECT_EQ(bands.most, bandRows);
      EXPECT_EQ(encoded(image->resized(size), type), encoded(whole->resized(size), type)) << bandRows;
      EXPECT_LE(bands.most, mostKept) << bandRows;
      bands.end = end;
      for (const auto& picture : {image, image->resized({150, 450})}) {
        EXPECT_FALSE(picture->encoded(type, {})) << "a row cannot be had";
      }
      bands.end = kHeight;
    }
    EXPECT_EQ(bands.kept, 0);
  }
}

TEST(PictureImage, IsEncodedAtAnotherSizeAsTheBitmapOfThatSizeIs) {
  for (const auto& [from, to] : {std::pair{PixelSize{90, 70}, PixelSize{37, 29}},
                                 {{700, 500}, {601, 433}},  // with a second thread, and more rows than are kept
                                 {{600, 430}, {40, 1}}}) {  // with fewer than are made together
    const Bitmap bitmap = painted(from, AlphaMode::premultiplied, noise);
    for (const ImageType type : {ImageType::jpeg, ImageType::png}) {
      EXPECT_EQ(encoded(makeImage(bitmap)->resized(to), type), encoded(makeImage(scaledBitmap(bitmap, to)), type))
          << from.width;
    }
    EXPECT_EQ(encoded(makeImage(bitmap)->resized(to)->resized({20, 9}), ImageType::png),
              encoded(makeImage(scaledBitmap(scaledBitmap(bitmap, to), {20, 9})), ImageType::png));
  }
}

BGRA withAlpha(BGRA pixel, std::uint8_t alpha) { return {pixel[0], pixel[1], pixel[2], alpha}; }

BGRA opaqueNoise(int x, int y) { return withAlpha(noise(x, y), 255); }

BGRA opaqueText(int x, int y) { return withAlpha(textLike(x, y), 255); }

std::uint8_t byte(double value) { return static_cast<std::uint8_t>(std::clamp(std::round(value), 0.0, 255.0)); }

BGRA anyColourAtAnyAlpha(int x, int y) { return {byte(x), byte(255 - x), 0, byte(y)}; }

BGRA straightened(int x, int y) {
  const auto divided = [y](int colour) { return y == 0 ? std::uint8_t{0} : byte(255.0 * colour / y); };
  return {divided(x), divided(255 - x), 0, byte(y)};
}

BGRA almostOpaque(int x, int y) { return {0, 0, 0, x + y == 300 ? std::uint8_t{254} : std::uint8_t{255}}; }

TEST(PNG, GivesEveryPixelBack) {
  constexpr auto kOpaque = AlphaMode::opaque, kPremultiplied = AlphaMode::premultiplied;
  constexpr PixelSize kSize{256, 256}, kLarge{503, 997};
  for (const auto& [reason, size, paint, expected, mode, expectedMode] :
       Table<PixelSize, Painter, Painter, AlphaMode, AlphaMode>{
           {"padding of any value is no alpha", kSize, noise, opaqueNoise, kOpaque, kOpaque},
           {"rows that repeat themselves are not filtered", kSize, textLike, opaqueText, kOpaque, kOpaque},
           {"on two threads", kLarge, noise, opaqueNoise, kOpaque, kOpaque},
           {"on two threads, rows that repeat themselves", kLarge, textLike, opaqueText, kOpaque, kOpaque},
           {"alpha that hides nothing is not stored", kSize, opaqueNoise, opaqueNoise, kPremultiplied, kOpaque},
           {"alpha that hides next to nothing is", kSize, almostOpaque, almostOpaque, kPremultiplied, kPremultiplied},
           {"divided by its alpha", kSize, anyColourAtAnyAlpha, straightened, kPremultiplied, kPremultiplied},
       }) {
    const auto decoded = decodedPNG(encoded(makeImage(painted(size, mode, paint)), ImageType::png));
    ASSERT_TRUE(decoded) << reason;
    EXPECT_TRUE(decoded->size == size && decoded->alpha == expectedMode) << reason;
    EXPECT_EQ(worstDifference(*decoded, expected), 0) << reason;
  }
}

TEST(JPEG, ShowsThePictureOnBlackInFullColour) {
  for (const AlphaMode mode : {AlphaMode::opaque, AlphaMode::premultiplied}) {
    const auto decoded = decodedJPEG(encoded(makeImage(painted({160, 70}, mode, textLike)), ImageType::jpeg, 1));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->size, (PixelSize{160, 70}));
    EXPECT_LE(worstDifference(*decoded, opaqueText), 6);
  }
}

TEST(JPEG, GrowsWithQuality) {
  const ImageRef image = makeImage(painted({160, 70}, AlphaMode::opaque, textLike));
  const auto file = [&](std::optional<double> quality) { return encoded(image, ImageType::jpeg, quality); };
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
  const ImageRef image = makeImage(painted({65501, 1}, AlphaMode::opaque, noise));
  EXPECT_TRUE(encoded(image, ImageType::jpeg).empty());
  const ImageRef scaledOnTwoThreads = makeImage(painted({1000, 300}, AlphaMode::opaque, noise))->resized({1, 65501});
  EXPECT_TRUE(encoded(scaledOnTwoThreads, ImageType::jpeg).empty()) << "and nobody waits for the rows";
  EXPECT_TRUE(decodedPNG(encoded(image, ImageType::png)));
}

double lanczos3(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= 3) return 0;
  const double angle = std::numbers::pi * x;
  return 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// The pixel with this index of a line that `paint` gives, at another length, by the definition: the filter widened
/// when shrinking, the picture mirrored at its edges. Opaque, to the nearest byte.
BGRA resampled(int index, const Painter& paint, std::int64_t count, std::int64_t length) {
  const double step = static_cast<double>(count) / static_cast<double>(length), widening = std::max(step, 1.0);
  const double centre = (index + 0.5) * step - 0.5;
  std::array<double, 4> sums = {};
  for (auto tap = std::lround(centre - 3 * widening) - 1; static_cast<double>(tap) <= centre + 3 * widening; ++tap) {
    const double weight = lanczos3((static_cast<double>(tap) - centre) / widening);
    const auto mirrored = tap < 0 ? -tap - 1 : tap >= count ? 2 * count - 1 - tap : tap;
    const BGRA pixel = paint(static_cast<int>(std::clamp<std::int64_t>(mirrored, 0, count - 1)), 0);
    for (const std::size_t i : {0U, 1U, 2U}) sums[i] += weight * pixel[i];
    sums[3] += weight;
  }
  return {byte(sums[0] / sums[3]), byte(sums[1] / sums[3]), byte(sums[2] / sums[3]), 255};
}

TEST(Scaling, FollowsTheDefinitionOfTheFilter) {
  const struct Case {
    std::string reason;
    PixelSize from, to;
    Painter paint;
  } cases[] = {
      {"noise, all frequencies", {128, 72}, {53, 30}, noise},
      {"text", {160, 90}, {100, 56}, textLike},
      {"another proportion: narrower and higher", {90, 20}, {31, 47}, textLike},
      {"rows a multiple of 4096 bytes long", {1024, 6}, {640, 4}, noise},
      {"the same size", {33, 17}, {33, 17}, noise},
      {"thousands of small weights", {3840, 600}, {10, 1}, noise},
      {"one row", {200, 1}, {80, 1}, noise},
      {"one column", {1, 200}, {1, 80}, noise},
      {"large enough for two processors, an odd number of rows", {1000, 1001}, {97, 131}, noise},
  };
  for (const auto& c : cases) {
    const Painter columns = [&](int x, int) { return c.paint(x, 0); }, rows = [&](int, int y) { return c.paint(y, 0); };
    const auto upright = scaledBitmap(painted(c.from, AlphaMode::opaque, columns), c.to);
    const auto level = scaledBitmap(painted(c.from, AlphaMode::opaque, rows), c.to);
    EXPECT_TRUE(upright.size == c.to && level.size == c.to) << c.reason;
    const auto column = [&](int x, int) { return resampled(x, c.paint, c.from.width, c.to.width); };
    const auto row = [&](int, int y) { return resampled(y, c.paint, c.from.height, c.to.height); };
    EXPECT_LE(worstDifference(upright, column), 1) << c.reason << ", upright lines";
    EXPECT_LE(worstDifference(level, row), 1) << c.reason << ", level lines";
  }
}

TEST(Scaling, KeepsAPlainColourExactly) {
  for (const PixelSize size : {PixelSize{1, 1}, {1, 400}, {400, 1}, {19, 31}}) {
    for (const BGRA colour : {BGRA{0, 0, 0, 0}, BGRA{1, 2, 3, 77}, BGRA{254, 255, 128, 255}}) {
      const Painter plain = [&](int, int) { return colour; };
      const auto result = scaledBitmap(painted({61, 43}, AlphaMode::premultiplied, plain), size);
      EXPECT_EQ(worstDifference(result, plain), 0) << size.width << " x " << size.height;
    }
  }
}

TEST(Scaling, NeverLiftsColourAboveItsAlpha) {
  const Painter squares = [](int x, int y) -> BGRA {
    const std::uint8_t alpha = x / 9 % 2 == 0 ? 200 : 20;
    return {alpha, y / 7 % 2 == 0 ? alpha : std::uint8_t{0}, 0, alpha};
  };
  const auto result = scaledBitmap(painted({90, 70}, AlphaMode::premultiplied, squares), {37, 29});
  int overshoots = 0;
  for (int i = 0; i < 37 * 29; ++i) {
    const auto [blue, green, red, alpha] = pixelOf(result, i % 37, i / 37);
    EXPECT_LE(std::max({blue, green, red}), alpha) << i;
    overshoots += alpha > 200;
  }
  EXPECT_GT(overshoots, 0) << "the pattern tests nothing";
}

#ifdef __x86_64__
TEST(RowKernels, GiveTheSameOnEveryProcessor) {
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "only one kind runs here";
  for (const auto& [from, to] : {std::pair{PixelSize{1, 1}, PixelSize{1, 1}},
                                 {{7, 9}, {23, 4}},
                                 {{100, 41}, {37, 40}},
                                 {{129, 60}, {50, 10}},
                                 {{261, 5}, {260, 5}}}) {
    const Bitmap bitmap = painted(from, AlphaMode::premultiplied, noise);
    std::vector<const std::uint8_t*> rows;
    for (std::size_t y = 0; y < static_cast<std::size_t>(from.height); ++y) rows.push_back(rowOf(bitmap, y));
    const auto horizontal = lanczosFilter(from.width, to.width), vertical = lanczosFilter(from.height, to.height);
    const auto bytes = static_cast<std::size_t>(from.width) * 4, count = static_cast<std::size_t>(to.width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(to.height); ++y) {
      const auto made = [&](const RowKernels& kernels) {
        std::vector<std::int16_t> sums(bytes + kRowPadding);
        kernels.addRows(
            {rows.data(), rows.size() - 1, vertical.first[y], &vertical.weights[y * vertical.taps], vertical.taps},
            bytes, sums.data());
        Bytes row(count * 4);
        kernels.addColumns(sums.data(),
                           {horizontal.first.data(), horizontal.weights.data(), horizontal.taps, count, y % 2 == 0},
                           row.data());
        return row;
      };
      EXPECT_EQ(made(baselineRowKernels()), made(avx2RowKernels())) << from.width << " to " << to.width;
    }
  }
}
#endif

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
  for (const auto& [reason, format, bytes, pixel] : Table<PixelFormat, Bytes, Bytes>{
           {"depth 24, as it is", kDepth24, {1, 2, 3, 99}, {1, 2, 3, 99}},
           {"with alpha, as it is", kDepth32, {1, 2, 3, 99}, {1, 2, 3, 99}},
           {"the other byte order", {24, 32, 32, true, 0xFF0000, 0xFF00, 0xFF}, {99, 3, 2, 1}, {1, 2, 3, 255}},
           {"and with alpha", {32, 32, 32, true, 0xFF0000, 0xFF00, 0xFF}, {99, 3, 2, 1}, {1, 2, 3, 99}},
           {"red last", {24, 32, 32, false, 0xFF, 0xFF00, 0xFF0000}, {3, 2, 1, 99}, {1, 2, 3, 255}},
           {"packed", {24, 24, 32, false, 0xFF0000, 0xFF00, 0xFF}, {1, 2, 3, 99}, {1, 2, 3, 255}},
           {"depth 30", {30, 32, 32, false, 0x3FF00000, 0xFFC00, 0x3FF}, {0xFF, 0x03, 0x48, 0x00}, {255, 128, 1, 255}},
           {"depth 16 reaches full white", kDepth16, {0xFF, 0xFF, 0, 0}, {255, 255, 255, 255}},
           {"depth 16 rounds", kDepth16, {0x21, 0x08, 0, 0}, {8, 4, 8, 255}},
       }) {
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
  for (const auto& [reason, format, size, byteCount] : Table<PixelFormat, PixelSize, std::size_t>{
           {"too few bytes", kDepth24, {2, 2}, 15},
           {"too few bytes for the padding", kDepth16, {1, 1}, 2},
           {"a size that overflows", kDepth24, {std::int64_t{1} << 62, 4}, 16},
           {"palette", {8, 8, 32, false, 0xE0, 0x1C, 0x03}, {1, 1}, 16},
           {"no red", {24, 32, 32, false, 0, 0xFF00, 0xFF}, {1, 1}, 16},
           {"a mask with a gap", {16, 16, 32, false, 0xA800, 0x07E0, 0x001F}, {1, 1}, 16},
           {"no such padding", {24, 32, 0, false, 0xFF0000, 0xFF00, 0xFF}, {1, 1}, 16},
       }) {
    EXPECT_FALSE(toBitmap(format, size, shared(Bytes(16)), byteCount)) << reason;
  }
}

TEST(BitmapCanvas, PlacesPicturesOnBlackOrCutsOneToAShape) {
  // Two pixels side by side in a row with a gap.
  const Bitmap two{.size = {2, 1}, .rowBytes = 12, .pixels = shared({1, 2, 3, 0, 4, 5, 6, 0, 9, 9, 9, 9})};
  const auto placed = pixelsOf(onBlack({{two, 1, 1}}, {3, 2}).value());
  EXPECT_EQ(placed, (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 0, 4, 5, 6, 0}));
  const Bitmap glass{.size = {1, 1}, .rowBytes = 4, .alpha = AlphaMode::premultiplied, .pixels = shared({7, 7, 7, 8})};
  const auto both = onBlack({{glass, 0, 0}, {two, 1, 0}}, {3, 1}).value();
  EXPECT_EQ(both.alpha, AlphaMode::premultiplied);
  EXPECT_EQ(pixelsOf(both), (Bytes{7, 7, 7, 8, 1, 2, 3, 255, 4, 5, 6, 255})) << "what is opaque stays so beside glass";
  const auto cut = cutToShape(two, {{1, 0, 5, 5}}).value();
  EXPECT_EQ(cut.alpha, AlphaMode::premultiplied);
  EXPECT_EQ(pixelsOf(cut), (Bytes{0, 0, 0, 0, 4, 5, 6, 255})) << "nothing outside of the shape shows";
}

TEST(Orientation, MovesEveryPixel) {
  // 1 2 / 3 4 / 5 6, with a gap behind each row.
  const Bitmap source{
      .size = {2, 3}, .rowBytes = 12, .pixels = shared({1, 0, 0, 0, 2, 0, 0, 0, 9, 9, 9, 9, 3, 0, 0, 0, 4, 0,
                                                        0, 0, 9, 9, 9, 9, 5, 0, 0, 0, 6, 0, 0, 0, 9, 9, 9, 9})};
  for (const auto& [reason, orientation, expected] : Table<Orientation, std::string>{
           {"upright", {}, "12 34 56 "},
           {"upside down", {.isUpsideDown = true}, "56 34 12 "},
           {"mirrored", {.isMirrored = true}, "21 43 65 "},
           {"a quarter clockwise", {.quarterTurns = 1}, "531 642 "},
           {"a half", {.quarterTurns = 2}, "65 43 21 "},
           {"three quarters", {.quarterTurns = 3}, "246 135 "},
           {"mirrored, then turned", {.isMirrored = true, .quarterTurns = 1}, "642 531 "},
       }) {
    const auto moved = oriented(source, orientation).value();
    std::string seen;
    for (std::int64_t y = 0; y < moved.size.height; ++y) {
      for (std::int64_t x = 0; x < moved.size.width; ++x) {
        seen += std::to_string(readPixel(rowOf(moved, static_cast<std::size_t>(y)), static_cast<std::size_t>(x)));
      }
      seen += ' ';
    }
    EXPECT_EQ(seen, expected) << reason;
  }
}

}  // namespace
}  // namespace tavik::platform::imaging
