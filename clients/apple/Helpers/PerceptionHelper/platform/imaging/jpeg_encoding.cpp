#include "platform/imaging/jpeg_encoding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <span>
#include <utility>

#include <jpeglib.h>

#include "platform/imaging/bitmap_row.h"
#include "platform/imaging/file_bytes.h"

namespace tavik::platform::imaging {
namespace {

/// What libjpeg's jpeg_set_defaults sets.
constexpr double kDefaultQuality = 0.75;

/// The encoder's scale goes from 1 to 100.
int percent(double quality) {
  if (!(quality > 0.01)) return 1;
  return static_cast<int>(std::lround(std::min(quality, 1.0) * 100));
}

/// libjpeg's structure with its error handler and its destination, and the file that it makes. The library's own
/// destination in memory loses its buffer when it fails.
class Writer {
 public:
  Writer() {
    jpeg.err = jpeg_std_error(&errors_);
    jpeg.client_data = this;
    errors_.error_exit = [](j_common_ptr failed) { self(failed).fail(); };
    errors_.output_message = [](j_common_ptr) {};
    destination_.init_destination = [](j_compress_ptr begun) { self(begun).takeNextPart(); };
    destination_.empty_output_buffer = [](j_compress_ptr full) -> boolean { return self(full).flush(kPartBytes); };
    destination_.term_destination = [](j_compress_ptr done) {
      self(done).flush(kPartBytes - self(done).destination_.free_in_buffer);
    };
  }
  ~Writer() { jpeg_destroy_compress(&jpeg); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void create() {
    jpeg_create_compress(&jpeg);
    jpeg.dest = &destination_;
  }

  jpeg_compress_struct jpeg = {};
  FileBytes file = {};
  std::jmp_buf afterFailure = {};

 private:
  static constexpr std::size_t kPartBytes = 16384;

  template <class JPEG>
  static Writer& self(JPEG jpeg) {
    return *static_cast<Writer*>(jpeg->client_data);
  }

  [[noreturn]] void fail() { std::longjmp(afterFailure, 1); }

  boolean flush(std::size_t count) {
    if (!append(file, std::span(part_).first(count))) fail();
    takeNextPart();
    return TRUE;
  }

  void takeNextPart() {
    destination_.next_output_byte = part_.data();
    destination_.free_in_buffer = part_.size();
  }

  jpeg_error_mgr errors_ = {};
  jpeg_destination_mgr destination_ = {};
  std::array<std::uint8_t, kPartBytes> part_;
};

/// Premultiplied colour is what the picture shows on black: the alpha byte is skipped like padding.
void setParameters(jpeg_compress_struct& jpeg, PixelSize size, int quality) {
  jpeg.image_width = static_cast<JDIMENSION>(size.width);
  jpeg.image_height = static_cast<JDIMENSION>(size.height);
  jpeg.input_components = static_cast<int>(kBytesPerPixel);
  jpeg.in_color_space = JCS_EXT_BGRX;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
  jpeg.dct_method = JDCT_ISLOW;
}

/// False when a row cannot be had, and when libjpeg fails, which then jumps to the first line: nothing that has a
/// destructor may live in here.
bool writeFile(Writer& writer, PixelSize size, const std::function<const std::uint8_t*()>& nextRow, int quality) {
  if (setjmp(writer.afterFailure)) return false;
  writer.create();
  setParameters(writer.jpeg, size, quality);
  jpeg_start_compress(&writer.jpeg, TRUE);
  for (std::int64_t y = 0; y < size.height; ++y) {
    auto* row = const_cast<JSAMPROW>(nextRow());  // libjpeg reads only
    if (row == nullptr) return false;
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
  return std::move(writer.file);
}

}  // namespace tavik::platform::imaging
