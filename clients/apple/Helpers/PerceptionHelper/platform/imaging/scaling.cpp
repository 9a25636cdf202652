#include "platform/imaging/scaling.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <future>
#include <memory>
#include <span>
#include <thread>
#include <vector>

#include <zimg.h>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// Eight times the bytes of an 8K screen; the program never asks for enlargements, so nothing real is near.
constexpr std::size_t kMaximumBytes = std::size_t{1} << 30U;
constexpr double kLobes = 3;

/// The alignment that zimg asks of every buffer.
struct alignas(64) CacheLine {
  std::array<std::uint16_t, 32> values;
};

/// How a component stands in a plane of 16 bits: with room for the overshoot of the filter on both sides, which zimg
/// would clip between its two passes, and with a part below one that keeps them exact.
constexpr unsigned kFractionBits = 7;
constexpr int kZero = 1 << 14U;

struct GraphFree {
  void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};
using Graph = std::unique_ptr<zimg_filter_graph, GraphFree>;

zimg_image_format planeOf(PixelSize size) {
  zimg_image_format format;
  zimg_image_format_default(&format, ZIMG_API_VERSION);
  format.width = static_cast<unsigned>(size.width);
  format.height = static_cast<unsigned>(size.height);
  format.pixel_type = ZIMG_PIXEL_WORD;
  format.depth = 16;
  format.pixel_range = ZIMG_RANGE_FULL;
  return format;
}

/// Rows of the target that are computed together.
struct Band {
  unsigned top = 0;
  unsigned rows = 0;
};

/// The resampler of one plane.
Graph makeGraph(PixelSize from, PixelSize to, Band band) {
  zimg_image_format source = planeOf(from);
  const zimg_image_format target = planeOf({.width = to.width, .height = band.rows});
  const double step = static_cast<double>(from.height) / static_cast<double>(to.height);
  source.active_region = {
      .left = 0, .top = band.top * step, .width = static_cast<double>(from.width), .height = band.rows * step};
  zimg_graph_builder_params parameters;
  zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
  parameters.resample_filter = ZIMG_RESIZE_LANCZOS;
  parameters.filter_param_a = kLobes;
  return Graph(zimg_filter_graph_build(&source, &target, &parameters));
}

/// What a graph wants its caller to provide.
struct Needs {
  unsigned inputRows = 0;
  unsigned outputRows = 0;
  std::size_t workBytes = 0;
};

std::optional<Needs> needsOf(const zimg_filter_graph* graph) {
  Needs needs;
  if (zimg_filter_graph_get_input_buffering(graph, &needs.inputRows) != ZIMG_ERROR_SUCCESS ||
      zimg_filter_graph_get_output_buffering(graph, &needs.outputRows) != ZIMG_ERROR_SUCCESS ||
      zimg_filter_graph_get_tmp_size(graph, &needs.workBytes) != ZIMG_ERROR_SUCCESS) {
    return std::nullopt;
  }
  return needs;
}

/// Rows of one side of the graph: row y is kept at y & mask.
class RowBuffer {
 public:
  /// For planes of this size, of which the graph needs `rows` at a time (`ZIMG_BUFFER_MAX`: all of them).
  RowBuffer(PixelSize size, unsigned rows)
      : mask_(zimg_select_buffer_mask(rows)),
        linesPerRow_(oddLines(size.width)),
        lines_(linesPerRow_ * (mask_ == ZIMG_BUFFER_MAX ? static_cast<std::size_t>(size.height) : mask_ + 1U)) {}

  std::uint16_t* row(unsigned y) { return lines_[(y & mask_) * linesPerRow_].values.data(); }
  [[nodiscard]] unsigned mask() const { return mask_; }
  [[nodiscard]] std::ptrdiff_t stride() const { return static_cast<std::ptrdiff_t>(linesPerRow_ * sizeof(CacheLine)); }

 private:
  /// Rows an odd number of cache lines apart: a multiple of 4096 bytes apart, the pixels of a column would share a set
  /// of the cache.
  static std::size_t oddLines(std::int64_t width) {
    const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(std::uint16_t);
    return ((bytes + sizeof(CacheLine) - 1) / sizeof(CacheLine)) | 1U;
  }

  unsigned mask_;
  std::size_t linesPerRow_;
  std::vector<CacheLine> lines_;
};

/// One component on its way through the graph.
struct Plane {
  const Bitmap& source;
  RowBuffer& input;
  RowBuffer& output;
  std::uint8_t* target;  ///< the band's first row
  std::size_t targetRowBytes;
  unsigned shift;
  bool isFirst;  ///< the pixels of the target have no component yet
};

int readRow(void* user, unsigned y, unsigned left, unsigned right) {
  Plane& plane = *static_cast<Plane*>(user);
  const std::uint8_t* from = rowOf(plane.source, y);
  const unsigned shift = plane.shift;
  std::uint16_t* to = plane.input.row(y);
  for (std::size_t x = left; x < right; ++x)
    to[x] = static_cast<std::uint16_t>((componentOf(readPixel(from, x), shift) << kFractionBits) + kZero);
  return 0;
}

/// Rounds a row to bytes, none above the alpha that its pixel already has.
int writeRow(void* user, unsigned y, unsigned left, unsigned right) {
  Plane& plane = *static_cast<Plane*>(user);
  const std::uint16_t* from = plane.output.row(y);
  const unsigned shift = plane.shift;
  std::uint8_t* to = plane.target + y * plane.targetRowBytes;
  if (plane.isFirst) std::memset(to + left * kBytesPerPixel, 0xFF, (right - left) * kBytesPerPixel);
  for (std::size_t x = left; x < right; ++x) {
    const Pixel pixel = readPixel(to, x);
    const int rounded = (from[x] - kZero + (1 << (kFractionBits - 1U))) >> kFractionBits;
    const int bounded = std::clamp(rounded, 0, componentOf(pixel, kAlphaShift));
    writePixel(to, x, (pixel & ~(0xFFU << shift)) | (static_cast<Pixel>(bounded) << shift));
  }
  return 0;
}

template <class Buffer>
Buffer graphBuffer(RowBuffer& rows) {
  Buffer buffer{};
  buffer.version = ZIMG_API_VERSION;
  buffer.plane[0].data = rows.row(0);
  buffer.plane[0].stride = rows.stride();
  buffer.plane[0].mask = rows.mask();
  return buffer;
}

/// False when zimg gives up.
bool resample(const zimg_filter_graph* graph, Plane& plane, std::vector<CacheLine>& work) {
  const auto input = graphBuffer<zimg_image_buffer_const>(plane.input);
  const auto output = graphBuffer<zimg_image_buffer>(plane.output);
  return zimg_filter_graph_process(graph, &input, &output, work.data(), readRow, &plane, writeRow, &plane) ==
         ZIMG_ERROR_SUCCESS;
}

/// Alpha comes first: it bounds the colour.
std::span<const unsigned> componentsOf(AlphaMode alpha) {
  static constexpr std::array kShifts{kAlphaShift, kBlueShift, kGreenShift, kRedShift};
  return std::span(kShifts).subspan(alpha == AlphaMode::premultiplied ? 0 : 1);
}

/// What is scaled, and to where.
struct Job {
  const Bitmap& source;
  PixelSize size;
  std::uint8_t* target;
  std::size_t targetRowBytes;
};

/// False when zimg gives up. Throws std::bad_alloc.
bool scaleBand(const Job& job, Band band) {
  const Graph graph = makeGraph(job.source.size, job.size, band);
  const auto needs = graph ? needsOf(graph.get()) : std::nullopt;
  if (!needs) return false;
  RowBuffer input(job.source.size, needs->inputRows);
  RowBuffer output({.width = job.size.width, .height = band.rows}, needs->outputRows);
  std::vector<CacheLine> work(needs->workBytes / sizeof(CacheLine) + 1);
  const auto components = componentsOf(job.source.alpha);
  return std::ranges::all_of(components, [&](unsigned shift) {
    Plane plane{.source = job.source,
                .input = input,
                .output = output,
                .target = job.target + band.top * job.targetRowBytes,
                .targetRowBytes = job.targetRowBytes,
                .shift = shift,
                .isFirst = shift == components.front()};
    return resample(graph.get(), plane, work);
  });
}

/// Both halves at once, where there are processors for it and it takes longer than to start a thread.
bool scaleAll(const Job& job) {
  const auto rows = static_cast<unsigned>(job.size.height);
  const bool isSmall = job.source.size.width * job.source.size.height < 1'000'000;
  if (isSmall || rows < 2 || std::thread::hardware_concurrency() < 2) return scaleBand(job, {.top = 0, .rows = rows});
  const Band upper{.top = 0, .rows = rows / 2};
  auto above = std::async([&job, upper] { return scaleBand(job, upper); });
  const bool isBelowDone = scaleBand(job, {.top = upper.rows, .rows = rows - upper.rows});
  return above.get() && isBelowDone;
}

}  // namespace

std::optional<Bitmap> scaled(const Bitmap& source, PixelSize size) {
  const auto rowBytes = static_cast<std::size_t>(size.width) * kBytesPerPixel;
  const auto height = static_cast<std::size_t>(size.height);
  if (height > kMaximumBytes / rowBytes) return std::nullopt;
  const std::shared_ptr<std::uint8_t[]> pixels = std::make_shared_for_overwrite<std::uint8_t[]>(rowBytes * height);
  if (!scaleAll({.source = source, .size = size, .target = pixels.get(), .targetRowBytes = rowBytes}))
    return std::nullopt;
  return Bitmap{size, rowBytes, source.alpha, {pixels, pixels.get()}};
}

}  // namespace tavik::platform::imaging
