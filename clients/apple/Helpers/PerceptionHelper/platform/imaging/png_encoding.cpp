#include "platform/imaging/png_encoding.h"

#include <csetjmp>
#include <cstdint>
#include <functional>
#include <span>
#include <system_error>
#include <thread>

#include <png.h>

#include "platform/imaging/deflate_stream.h"
#include "platform/imaging/file_bytes.h"
#include "platform/imaging/png_strips.h"

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
  std::function<const PNGStrip*()> nextStrip;  ///< null when one cannot be had
  DeflateStream stream = {};
  FileBytes file = {};
};

/// False when rows cannot be had, and when libpng fails, which then jumps to the first line: nothing that has a
/// destructor may live in here. Pixels are compressed by ISA-L, which takes a fifth of the time that zlib does.
bool writeFile(const Writer& writer, Job& job) {
  if (setjmp(png_jmpbuf(writer.png))) return false;
  png_set_write_fn(writer.png, &job.file, appendToFile, ignoreFlush);
  png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(job.size.width),
               static_cast<png_uint_32>(job.size.height), 8,
               job.translucent ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(writer.png, writer.info);
  for (bool isDone = false; !isDone;) {
    const auto* const strip = job.nextStrip();
    if (strip == nullptr) return false;
    isDone = strip->isLast;
    job.stream.add(strip->rows(), isDone,
                   [&writer](std::span<const std::uint8_t> part) { writeChunk(writer.png, "IDAT", part); });
  }
  writeChunk(writer.png, "IEND", {});
  return true;
}

/// False where no thread is to be had.
bool startThread(std::thread& thread, const std::function<void()>& work) {
  try {
    thread = std::thread(work);
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

/// Makes the strips here, and compresses them on another thread meanwhile. Nothing where there is none to be had.
std::optional<bool> writeOnTwoThreads(PNGStripMaker& maker, const Writer& writer, Job& job) {
  bool isWritten = false;
  PNGStripQueue queue;
  job.nextStrip = [&queue] { return queue.next(); };
  struct Compressor {
    PNGStripQueue& queue;
    std::thread thread = {};
    ~Compressor() {
      queue.end();
      if (thread.joinable()) thread.join();
    }
  };
  {
    Compressor compressor{queue};
    const bool isStarted = startThread(compressor.thread, [&] {
      isWritten = writeFile(writer, job);
      queue.end();
    });
    if (!isStarted) return std::nullopt;
    for (auto* strip = queue.blank(); strip != nullptr && maker.make(*strip); strip = queue.blank()) {
      queue.push();
      if (strip->isLast) break;
    }
  }
  return isWritten;
}

bool writeOnOneThread(PNGStripMaker& maker, const Writer& writer, Job& job) {
  PNGStrip strip;
  job.nextStrip = [&] { return maker.make(strip) ? &strip : nullptr; };
  return writeFile(writer, job);
}

/// Smaller pictures take less than a millisecond on one thread.
bool isLarge(PixelSize size) {
  constexpr std::int64_t kLarge = 250'000;
  return size.width * size.height >= kLarge;
}

}  // namespace

std::optional<std::vector<std::byte>> encodedPNG(const BandedPicture& picture) {
  const bool translucent = isTranslucent(picture);
  PNGStripMaker maker(picture, translucent);
  Job job{.size = picture.size, .translucent = translucent, .nextStrip = {}};
  const Writer writer;
  if (!writer.png || !writer.info || !job.stream.isUsable()) return std::nullopt;
  auto isWritten = isLarge(picture.size) && std::thread::hardware_concurrency() > 1
                       ? writeOnTwoThreads(maker, writer, job)
                       : std::nullopt;
  if (!isWritten) isWritten = writeOnOneThread(maker, writer, job);
  return *isWritten ? std::optional(std::move(job.file)) : std::nullopt;
}

}  // namespace tavik::platform::imaging
