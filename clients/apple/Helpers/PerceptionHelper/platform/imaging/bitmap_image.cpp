#include <limits>
#include <new>
#include <utility>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/bitmap_row.h"
#include "platform/imaging/jpeg_encoding.h"
#include "platform/imaging/png_encoding.h"
#include "platform/imaging/scaled_rows.h"

namespace tavik::platform::imaging {
namespace {

bool isPictureSide(std::int64_t side) { return side >= 1 && side <= kLongestSide; }

bool isPictureSize(PixelSize size) { return isPictureSide(size.width) && isPictureSide(size.height); }

bool isPicture(const Bitmap& bitmap) {
  if (!bitmap.pixels || !isPictureSize(bitmap.size)) return false;
  return bitmap.rowBytes / kBytesPerPixel >= static_cast<std::size_t>(bitmap.size.width) &&
         bitmap.rowBytes <= std::numeric_limits<std::size_t>::max() / static_cast<std::size_t>(bitmap.size.height);
}

/// What `make` yields, or an empty result when memory runs out.
template <class Make>
auto unlessOutOfMemory(Make make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

/// 1 GiB, eight times the pixels of an 8K screen. The program never enlarges, so no real picture comes near it.
constexpr std::int64_t kMaximumPixels = (std::int64_t{1} << 30U) / std::int64_t{kBytesPerPixel};

bool isScaledSize(PixelSize size) { return isPictureSize(size) && size.width <= kMaximumPixels / size.height; }

/// A bitmap that is to be seen at another size. JPEG takes its rows as they are made, so that no second picture is ever
/// in memory.
class ScaledImage final : public Image {
 public:
  ScaledImage(Bitmap source, PixelSize size) : source_(std::move(source)), size_(size) {}

  PixelSize size() const override { return size_; }

  ImageRef resized(PixelSize size) const override {
    const auto image = unlessOutOfMemory([&] { return makeImage(scaled(source_, size_)); });
    return image ? image->resized(size) : nullptr;
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    return unlessOutOfMemory([&] {
      if (type == ImageType::png) return encodedPNG(scaled(source_, size_));
      ScaledRows rows(source_, size_);
      return encodedJPEG(
          size_, [&rows] { return rows.next(); }, quality);
    });
  }

 private:
  Bitmap source_;
  PixelSize size_;
};

class BitmapImage final : public Image {
 public:
  explicit BitmapImage(Bitmap bitmap) : bitmap_(std::move(bitmap)) {}

  PixelSize size() const override { return bitmap_.size; }

  ImageRef resized(PixelSize size) const override {
    if (!isScaledSize(size)) return nullptr;
    return unlessOutOfMemory([&]() -> ImageRef { return std::make_shared<ScaledImage>(bitmap_, size); });
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    return unlessOutOfMemory([&] {
      if (type == ImageType::png) return encodedPNG(bitmap_);
      return encodedJPEG(
          bitmap_.size, [this, y = std::size_t{0}]() mutable { return rowOf(bitmap_, y++); }, quality);
    });
  }

 private:
  Bitmap bitmap_;
};

}  // namespace

ImageRef makeImage(Bitmap bitmap) {
  if (!isPicture(bitmap)) return nullptr;
  return unlessOutOfMemory([&]() -> ImageRef { return std::make_shared<BitmapImage>(std::move(bitmap)); });
}

}  // namespace tavik::platform::imaging
