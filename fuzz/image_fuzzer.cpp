#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <numbers>
#include <span>
#include <utility>
#include <vector>

#include <png.h>
#include <turbojpeg.h>

#include "platform/imaging/bitmap.h"

using namespace tavik::platform;
using imaging::AlphaMode;
using imaging::Bitmap;

namespace {

void require(bool isSo) {
  if (!isSo) std::abort();
}

/// Pixels in blue, green, red, alpha, as they were before they were multiplied.
std::vector<std::uint8_t> pixelsOfPNG(std::span<const std::byte> file, PixelSize size) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  require(png_image_begin_read_from_memory(&image, file.data(), file.size()) != 0);
  image.format = PNG_FORMAT_BGRA;
  require(std::cmp_equal(image.width, size.width) && std::cmp_equal(image.height, size.height));
  std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
  require(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) != 0);
  return pixels;
}

/// A bitmap with gaps between its rows, no colour above its alpha.
Bitmap bitmap(FuzzedDataProvider& dice, PixelSize size) {
  const auto width = static_cast<std::size_t>(size.width), height = static_cast<std::size_t>(size.height);
  Bitmap result{.size = size,
                .rowBytes = width * 4 + dice.ConsumeIntegralInRange<std::size_t>(0, 9),
                .alpha = dice.ConsumeBool() ? AlphaMode::opaque : AlphaMode::premultiplied};
  std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[result.rowBytes * height](),
                                       std::default_delete<std::uint8_t[]>());
  dice.ConsumeData(pixels.get(), result.rowBytes * height);
  for (std::size_t at = 0; at < width * height && result.alpha != AlphaMode::opaque; ++at) {
    auto* const pixel = pixels.get() + at / width * result.rowBytes + at % width * 4;
    for (auto* colour = pixel; colour < pixel + 3; ++colour) *colour = std::min(*colour, pixel[3]);
  }
  result.pixels = std::move(pixels);
  return result;
}

std::span<const std::uint8_t, 4> pixelAt(const Bitmap& bitmap, std::size_t x, std::size_t y) {
  return std::span<const std::uint8_t, 4>(bitmap.pixels.get() + y * bitmap.rowBytes + x * 4, 4);
}

/// PNG gives every pixel back; a translucent one to the level that its division leaves open.
void comparePNG(const Bitmap& source, std::span<const std::byte> file) {
  const auto pixels = pixelsOfPNG(file, source.size);
  const auto width = static_cast<std::size_t>(source.size.width);
  for (std::size_t at = 0; at < pixels.size() / 4; ++at) {
    const auto from = pixelAt(source, at % width, at / width);
    const int alpha = source.alpha == AlphaMode::opaque ? 255 : from[3];
    require(pixels[at * 4 + 3] == alpha);
    for (std::size_t i = 0; i < 3; ++i) require(std::abs(pixels[at * 4 + i] * alpha - from[i] * 255) <= 255 / 2 + 1);
  }
}

void checkJPEG(std::span<const std::byte> file, PixelSize size) {
  const std::unique_ptr<void, decltype(&tjDestroy)> decoder(tjInitDecompress(), &tjDestroy);
  const auto* const bytes = reinterpret_cast<const unsigned char*>(file.data());
  int width = 0, height = 0, subsampling = 0, space = 0;
  require(tjDecompressHeader3(decoder.get(), bytes, file.size(), &width, &height, &subsampling, &space) == 0);
  require(width == size.width && height == size.height && subsampling == TJSAMP_444);
  std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  require(tjDecompress2(decoder.get(), bytes, file.size(), pixels.data(), width, 0, height, TJPF_RGB, 0) == 0);
}

double lanczos3(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= 3) return 0;
  const double angle = std::numbers::pi * x;
  return 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// One byte of a line at another length, in doubles.
double resampled(std::span<const std::uint8_t> line, std::size_t length, std::size_t place) {
  const auto count = static_cast<std::ptrdiff_t>(line.size());
  const double step = static_cast<double>(count) / static_cast<double>(length), widening = std::max(step, 1.0);
  const double centre = (static_cast<double>(place) + 0.5) * step - 0.5;
  double sum = 0, weights = 0;
  for (auto tap = std::lround(centre - 3 * widening) - 1; static_cast<double>(tap) <= centre + 3 * widening; ++tap) {
    const double weight = lanczos3((static_cast<double>(tap) - centre) / widening);
    const auto inside = std::clamp<std::ptrdiff_t>(tap < 0        ? -tap - 1
                                                   : tap >= count ? 2 * count - 1 - tap
                                                                  : tap,
                                                   0, count - 1);
    sum += weight * line[static_cast<std::size_t>(inside)];
    weights += weight;
  }
  return std::clamp(sum / weights, 0.0, 255.0);
}

/// A line, lying or standing, scaled as one of doubles is, to within a level.
void compareScaled(const Bitmap& source, std::size_t length, bool isUpright) {
  const auto side = static_cast<std::int64_t>(length);
  const PixelSize size = isUpright ? PixelSize{1, side} : PixelSize{side, 1};
  const auto image = imaging::makeImage(source)->resized(size);
  const auto file = image->encoded(ImageType::png, std::nullopt);
  const auto pixels = pixelsOfPNG(*file, size);
  const auto count = static_cast<std::size_t>(std::max(source.size.width, source.size.height));
  for (std::size_t i = 0; i < 3; ++i) {
    std::vector<std::uint8_t> line;
    for (std::size_t at = 0; at < count; ++at)
      line.push_back(pixelAt(source, isUpright ? 0 : at, isUpright ? at : 0)[i]);
    for (std::size_t place = 0; place < length; ++place) {
      require(std::abs(pixels[place * 4 + i] - resampled(line, length, place)) <= 1.5);
    }
  }
}

}  // namespace

/// What decoders that are not ours read in a file is what was written into it; scaling is the filter that it is said to
/// be.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::int64_t kLongest = 300;
  FuzzedDataProvider dice(data, size);
  const bool isUpright = dice.ConsumeBool();
  const PixelSize sides{dice.ConsumeIntegralInRange<std::int64_t>(1, kLongest),
                        dice.ConsumeIntegralInRange<std::int64_t>(1, dice.ConsumeBool() ? 1 : kLongest / 4)};
  const auto length = dice.ConsumeIntegralInRange<std::size_t>(1, kLongest);
  const auto source = bitmap(dice, isUpright ? PixelSize{sides.height, sides.width} : sides);
  const auto image = imaging::makeImage(source);
  comparePNG(source, *image->encoded(ImageType::png, std::nullopt));
  checkJPEG(*image->encoded(ImageType::jpeg, 0.85), source.size);
  if (sides.height == 1 && source.alpha == AlphaMode::opaque) compareScaled(source, length, isUpright);
  const auto other = image->resized({.width = static_cast<std::int64_t>(length), .height = sides.height});
  checkJPEG(*other->encoded(ImageType::jpeg, 0.7), other->size());
  pixelsOfPNG(*other->encoded(ImageType::png, std::nullopt), other->size());
  return 0;
}
