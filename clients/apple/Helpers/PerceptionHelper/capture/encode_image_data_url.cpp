#include "capture/encode_image_data_url.h"

#include "capture/base64.h"
#include "capture/scaled_size.h"

namespace tavik {
namespace {

platform::ImageRef fitted(const platform::ImageRef& image, std::int64_t longEdgePx) {
  const auto size = scaledSize(image->size(), longEdgePx);
  if (size == image->size()) return image;
  const auto resized = image->resized(size);
  return resized ? resized : image;
}

}  // namespace

std::optional<std::string> encodeImageDataURL(const platform::ImageRef& image, const ImageParameters& parameters) {
  const bool isPNG = parameters.format == "png";
  const auto quality = parameters.format == "jpeg" ? std::optional(parameters.quality) : std::nullopt;
  const auto file = fitted(image, parameters.longEdgePx)
                        ->encoded(isPNG ? platform::ImageType::png : platform::ImageType::jpeg, quality);
  if (!file) return std::nullopt;
  std::string url = isPNG ? "data:image/png;base64," : "data:image/jpeg;base64,";
  appendBase64(*file, url);
  return url;
}

}  // namespace tavik
