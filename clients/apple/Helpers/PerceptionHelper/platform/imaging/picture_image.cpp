#include <limits>
#include <new>
#include <utility>

#include "platform/imaging/banded_picture.h"
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

/// A picture that is to be seen at another size. JPEG takes its rows as they are made, so that no second picture is
/// ever in memory.
class ScaledImage final : public Image {
 public:
  ScaledImage(BandedPicture source, PixelSize size) : source_(std::move(source)), size_(size) {}

  PixelSize size() const override { return size_; }

  ImageRef resized(PixelSize size) const override {
    auto bitmap = unlessOutOfMemory([&] { return scaled(source_, size_); });
    const auto image = bitmap ? makeImage(*std::move(bitmap)) : nullptr;
    return image ? image->resized(size) : nullptr;
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    return unlessOutOfMemory([&]() -> std::optional<std::vector<std::byte>> {
      if (type == ImageType::png) {
        auto bitmap = scaled(source_, size_);
        return bitmap ? encodedPNG(banded(*std::move(bitmap))) : std::nullopt;
      }
      ScaledRows rows(source_, size_);
      return encodedJPEG(
          size_, [&rows] { return rows.next(); }, quality);
    });
  }

 private:
  BandedPicture source_;
  PixelSize size_;
};

class PictureImage final : public Image {
 public:
  explicit PictureImage(BandedPicture picture) : picture_(std::move(picture)) {}

  PixelSize size() const override { return picture_.size; }

  ImageRef resized(PixelSize size) const override {
    if (!isScaledSize(size)) return nullptr;
    return unlessOutOfMemory([&]() -> ImageRef { return std::make_shared<ScaledImage>(picture_, size); });
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    return unlessOutOfMemory([&] {
      if (type == ImageType::png) return encodedPNG(picture_);
      RowReader rows(picture_);
      return encodedJPEG(
          picture_.size, [&rows] { return rows.next(); }, quality);
    });
  }

 private:
  BandedPicture picture_;
};

}  // namespace

ImageRef makeImage(BandedPicture picture) {
  if (!isPictureSize(picture.size)) return nullptr;
  return unlessOutOfMemory([&]() -> ImageRef { return std::make_shared<PictureImage>(std::move(picture)); });
}

ImageRef makeImage(Bitmap bitmap) {
  if (!isPicture(bitmap)) return nullptr;
  return unlessOutOfMemory([&] { return makeImage(banded(std::move(bitmap))); });
}

}  // namespace tavik::platform::imaging
