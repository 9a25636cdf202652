#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tavik::platform {

/// Width and height in pixels.
struct PixelSize {
  std::int64_t width = 0;
  std::int64_t height = 0;
  bool operator==(const PixelSize&) const = default;
};

/// The container formats that an image can be written in, with their type identifiers.
enum class ImageType : std::uint8_t {
  png,   ///< "public.png"
  jpeg,  ///< "public.jpeg"
};

struct Image;
using ImageRef = std::shared_ptr<const Image>;

/// An immutable picture (CGImage).
struct Image {
  virtual ~Image() = default;
  virtual PixelSize size() const = 0;
  /// The whole picture redrawn at exactly this size with high-quality interpolation, stretched when the proportions
  /// differ. Null when no bitmap of that size can be made: a side below 1, or one too large.
  virtual ImageRef resized(PixelSize size) const = 0;
  /// The picture as one file of this type. `quality`, from 0 to 1, is for lossy types; without it the encoder's own
  /// default applies. PNG keeps transparency; JPEG shows it on black. Nothing when the type cannot hold the picture.
  virtual std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const = 0;
};

}  // namespace tavik::platform
