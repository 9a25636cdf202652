#include "platform/imaging/png_encoding.h"

#include <csetjmp>
#include <cstdint>
#include <span>

#include <png.h>

#include "platform/imaging/deflate_stream.h"
#include "platform/imaging/file_bytes.h"
#include "platform/imaging/png_rows.h"

namespace tavik::platform::imaging {
namespace {

/// The owner of libpng's two structures, which are released together. Both pointers may be null.
class Writer {
 public:
  Writer() : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning)) {
    if (png) info = png_create_info_struct(png);
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  png_structp png = nullptr;
  png_infop info = nullptr;

 private:
  [[noreturn]] static void fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
  static void ignoreWarning(png_structp, png_const_charp) {}
};

void appendToFile(png_structp png, png_bytep bytes, std::size_t count) {
  if (!append(*static_cast<FileBytes*>(png_get_io_ptr(png)), {bytes, count})) png_error(png, "out of memory");
}

void ignoreFlush(png_structp) {}

void writeChunk(png_structp png, const char* name, std::span<const std::uint8_t> bytes) {
  png_write_chunk(png, reinterpret_cast<png_const_bytep>(name), bytes.data(), bytes.size());
}

/// What is to be written, and with what; all of it outlives the writing.
struct Job {
  PixelSize size;
  bool translucent;
  RowReader source;
  PNGRows rows;
  DeflateStream stream = {};
  FileBytes file = {};
};

/// False when a row cannot be had, and when libpng fails, which then jumps to the first line: nothing that has a
/// destructor may live in here. Pixels are compressed by ISA-L, which takes a fifth of the time that zlib does.
bool writeFile(const Writer& writer, Job& job) {
  if (setjmp(png_jmpbuf(writer.png))) return false;
  const auto height = static_cast<png_uint_32>(job.size.height);
  png_set_write_fn(writer.png, &job.file, appendToFile, ignoreFlush);
  png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(job.size.width), height, 8,
               job.translucent ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(writer.png, writer.info);
  for (png_uint_32 y = 0; y < height; ++y) {
    const auto* const row = job.source.next();
    if (row == nullptr) return false;
    job.stream.add(job.rows.filtered(row), y + 1 == height,
                   [&writer](std::span<const std::uint8_t> part) { writeChunk(writer.png, "IDAT", part); });
  }
  writeChunk(writer.png, "IEND", {});
  return true;
}

}  // namespace

std::optional<std::vector<std::byte>> encodedPNG(const BandedPicture& picture) {
  const bool translucent = isTranslucent(picture);
  Job job{.size = picture.size,
          .translucent = translucent,
          .source = RowReader(picture),
          .rows = PNGRows(picture.size.width, translucent)};
  const Writer writer;
  if (!writer.png || !writer.info || !job.stream.isUsable() || !writeFile(writer, job)) return std::nullopt;
  return std::move(job.file);
}

}  // namespace tavik::platform::imaging
