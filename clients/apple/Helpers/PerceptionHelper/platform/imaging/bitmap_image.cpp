#include <limits>
#include <new>
#include <utility>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/bitmap_row.h"
#include "platform/imaging/jpeg_encoding.h"
#include "platform/imaging/png_encoding.h"
#include "platform/imaging/scaling.h"

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

class BitmapImage final : public Image {
 public:
  explicit BitmapImage(Bitmap bitmap) : bitmap_(std::move(bitmap)) {}

  PixelSize size() const override { return bitmap_.size; }

  ImageRef resized(PixelSize size) const override {
    if (!isPictureSize(size)) return nullptr;
    return unlessOutOfMemory([&]() -> ImageRef {
      auto bitmap = scaled(bitmap_, size);
      return bitmap ? makeImage(*std::move(bitmap)) : nullptr;
    });
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    return unlessOutOfMemory(
        [&] { return type == ImageType::png ? encodedPNG(bitmap_) : encodedJPEG(bitmap_, quality); });
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
