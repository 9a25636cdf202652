#include "tools/mcp/picture.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <boost/archive/iterators/binary_from_base64.hpp>
#include <boost/archive/iterators/dataflow_exception.hpp>
#include <boost/archive/iterators/transform_width.hpp>
#include <png.h>
#include <turbojpeg.h>

namespace tavik::mcp {
namespace {

using Bytes = std::vector<unsigned char>;

/// None where it is not base64.
Bytes decoded(std::string_view base64) {
  constexpr int kBitsOfByte = 8, kBitsOfLetter = 6;
  using Letters = boost::archive::iterators::binary_from_base64<const char*>;
  using Decoder = boost::archive::iterators::transform_width<Letters, kBitsOfByte, kBitsOfLetter>;
  base64 = base64.substr(0, base64.find('='));
  const std::size_t count = base64.size() * kBitsOfLetter / kBitsOfByte;
  Bytes bytes;
  bytes.reserve(count);
  try {
    Decoder decoder(base64.data());
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<unsigned char>(*decoder++));
  } catch (const boost::archive::iterators::dataflow_exception&) {
    return {};
  }
  return bytes;
}

void measurePNG(const Bytes& bytes, Picture& picture) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) != 0) {
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
  }
  png_image_free(&image);
}

void measureJPEG(const Bytes& bytes, Picture& picture) {
  const auto destroy = [](void* decoder) { tjDestroy(decoder); };
  const std::unique_ptr<void, decltype(destroy)> decoder(tjInitDecompress(), destroy);
  int width = 0, height = 0, subsampling = 0, colours = 0;
  const auto size = static_cast<unsigned long>(bytes.size());
  if (!decoder ||
      tjDecompressHeader3(decoder.get(), bytes.data(), size, &width, &height, &subsampling, &colours) != 0) {
    return;
  }
  picture.width = width;
  picture.height = height;
}

}  // namespace

std::optional<Picture> pictureOf(std::string_view dataURL) {
  constexpr std::string_view kStart = "data:", kEnd = ";base64,";
  const auto end = dataURL.find(kEnd);
  if (!dataURL.starts_with(kStart) || end == std::string_view::npos) return std::nullopt;
  Picture picture{.mimeType = dataURL.substr(kStart.size(), end - kStart.size()),
                  .base64 = dataURL.substr(end + kEnd.size())};
  const auto bytes = decoded(picture.base64);
  picture.mimeType == "image/png" ? measurePNG(bytes, picture) : measureJPEG(bytes, picture);
  return picture;
}

}  // namespace tavik::mcp
