#include "platform/imaging/jpeg_encoding.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <span>

#include <jpeglib.h>

namespace tavik::platform::imaging {
namespace {

/// What libjpeg's jpeg_set_defaults sets.
constexpr double kDefaultQuality = 0.75;

/// The encoder's scale goes from 1 to 100.
int percent(double quality) {
  if (!(quality > 0.01)) return 1;
  return static_cast<int>(std::lround(std::min(quality, 1.0) * 100));
}

/// libjpeg's structure with its error handler, and the file that it makes.
class Writer {
 public:
  Writer() {
    jpeg.err = jpeg_std_error(&errors_);
    jpeg.client_data = this;
    errors_.error_exit = fail;
    errors_.output_message = ignoreMessage;
  }
  ~Writer() {
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  jpeg_compress_struct jpeg = {};
  unsigned char* bytes = nullptr;
  unsigned long length = 0;
  std::jmp_buf afterFailure = {};

 private:
  [[noreturn]] static void fail(j_common_ptr jpeg) {
    std::longjmp(static_cast<Writer*>(jpeg->client_data)->afterFailure, 1);
  }
  static void ignoreMessage(j_common_ptr) {}

  jpeg_error_mgr errors_ = {};
};

/// Premultiplied colour is what the picture shows on black: the alpha byte is skipped like padding.
void setParameters(jpeg_compress_struct& jpeg, PixelSize size, int quality) {
  jpeg.image_width = static_cast<JDIMENSION>(size.width);
  jpeg.image_height = static_cast<JDIMENSION>(size.height);
  jpeg.input_components = 4;
  jpeg.in_color_space = JCS_EXT_BGRX;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
  jpeg.dct_method = JDCT_ISLOW;
}

/// False when libjpeg fails, which then jumps to the first line: nothing that has a destructor may live in here.
bool writeFile(Writer& writer, PixelSize size, const std::function<const std::uint8_t*()>& nextRow, int quality) {
  if (setjmp(writer.afterFailure)) return false;
  jpeg_create_compress(&writer.jpeg);
  jpeg_mem_dest(&writer.jpeg, &writer.bytes, &writer.length);
  setParameters(writer.jpeg, size, quality);
  jpeg_start_compress(&writer.jpeg, TRUE);
  for (std::int64_t y = 0; y < size.height; ++y) {
    auto* row = const_cast<JSAMPROW>(nextRow());  // libjpeg reads only
    jpeg_write_scanlines(&writer.jpeg, &row, 1);
  }
  jpeg_finish_compress(&writer.jpeg);
  return true;
}

}  // namespace

std::optional<std::vector<std::byte>> encodedJPEG(PixelSize size, const std::function<const std::uint8_t*()>& nextRow,
                                                  std::optional<double> quality) {
  Writer writer;
  if (!writeFile(writer, size, nextRow, percent(quality.value_or(kDefaultQuality)))) return std::nullopt;
  const auto bytes = std::as_bytes(std::span(writer.bytes, writer.length));
  return std::vector(bytes.begin(), bytes.end());
}

}  // namespace tavik::platform::imaging
