#include "platform/imaging/jpeg_encoding.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <turbojpeg.h>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// What libjpeg's jpeg_set_defaults sets.
constexpr double kDefaultQuality = 0.75;

struct CompressorDestroy {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using Compressor = std::unique_ptr<void, CompressorDestroy>;

struct BufferFree {
  void operator()(unsigned char* buffer) const { tjFree(buffer); }
};
using Buffer = std::unique_ptr<unsigned char, BufferFree>;

/// The encoder's scale goes from 1 to 100.
int percent(double quality) {
  if (!(quality > 0.01)) return 1;
  return static_cast<int>(std::lround(std::min(quality, 1.0) * 100));
}

}  // namespace

std::optional<std::vector<std::byte>> encodedJPEG(const Bitmap& bitmap, std::optional<double> quality) {
  if (bitmap.rowBytes > std::size_t{std::numeric_limits<int>::max()}) return std::nullopt;
  const Compressor compressor(tjInitCompress());
  if (!compressor) return std::nullopt;

  unsigned char* buffer = nullptr;
  unsigned long length = 0;
  // Premultiplied colour is what the picture shows on black: the alpha byte is skipped like padding.
  const int status =
      tjCompress2(compressor.get(), bitmap.pixels.get(), static_cast<int>(bitmap.size.width),
                  static_cast<int>(bitmap.rowBytes), static_cast<int>(bitmap.size.height), TJPF_BGRX, &buffer, &length,
                  TJSAMP_444, percent(quality.value_or(kDefaultQuality)), TJFLAG_ACCURATEDCT);
  const Buffer owner(buffer);
  if (status != 0 || !buffer) return std::nullopt;
  const auto* first = reinterpret_cast<const std::byte*>(buffer);
  return std::vector<std::byte>(first, first + length);
}

}  // namespace tavik::platform::imaging
