#include "platform/imaging/pictures.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#include <png.h>
#include <turbojpeg.h>

namespace tavik::platform::imaging {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bitmap bitmapOf(PixelSize size, AlphaMode alpha, Bytes bytes) {
  const std::size_t rowBytes = bytes.size() / static_cast<std::size_t>(size.height);
  const auto shared = std::make_shared<const Bytes>(std::move(bytes));
  return {size, rowBytes, alpha, {shared, shared->data()}};
}

std::size_t offsetOf(std::size_t rowBytes, int x, int y) {
  return static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(x) * sizeof(BGRA);
}

}  // namespace

BGRA noise(int x, int y) {
  std::uint32_t bits = (static_cast<std::uint32_t>(x) * 0x9E3779B1U) ^ (static_cast<std::uint32_t>(y) * 0x85EBCA77U);
  bits = (bits ^ (bits >> 15U)) * 0xC2B2AE3DU;
  return std::bit_cast<BGRA>((bits ^ (bits >> 13U)) * 0x27D4EB2FU);
}

BGRA textLike(int x, int y) {
  const bool ink = y % 14 < 9 && x % 8 < 6 && noise(x / 2, y / 3)[0] > 128;
  return ink ? BGRA{0xC0, 0x20, noise(x / 80, y / 14)[0], 0} : BGRA{0xFF, 0xFF, 0xFF, 0};
}

Bitmap painted(PixelSize size, AlphaMode alpha, const Painter& paint) {
  const std::size_t rowBytes = static_cast<std::size_t>(size.width) * sizeof(BGRA) + 12;
  Bytes bytes(rowBytes * static_cast<std::size_t>(size.height), 0xA5);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) std::ranges::copy(paint(x, y), bytes.data() + offsetOf(rowBytes, x, y));
  return bitmapOf(size, alpha, std::move(bytes));
}

BGRA pixelOf(const Bitmap& bitmap, int x, int y) {
  BGRA pixel = {};
  std::copy_n(bitmap.pixels.get() + offsetOf(bitmap.rowBytes, x, y), pixel.size(), pixel.data());
  return pixel;
}

int worstDifference(const Bitmap& bitmap, const Painter& expected) {
  int worst = 0;
  for (int y = 0; y < bitmap.size.height; ++y)
    for (int x = 0; x < bitmap.size.width; ++x)
      for (std::size_t i = 0; i < 4; ++i)
        worst = std::max(worst, std::abs(pixelOf(bitmap, x, y)[i] - expected(x, y)[i]));
  return worst;
}

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
  if (tjDecompressHeader3(decoder.get(), source, file.size(), &width, &height, &subsampling, &space) != 0)
    return std::nullopt;
  Bytes bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * sizeof(BGRA));
  if (tjDecompress2(decoder.get(), source, file.size(), bytes.data(), width, 0, height, TJPF_BGRA, 0) != 0)
    return std::nullopt;
  return bitmapOf({width, height}, AlphaMode::opaque, std::move(bytes));
}

}  // namespace tavik::platform::imaging
