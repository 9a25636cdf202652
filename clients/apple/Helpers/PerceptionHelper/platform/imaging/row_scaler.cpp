#include "platform/imaging/row_scaler.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <simde/x86/sse2.h>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

using Vector = simde__m128i;

/// A row between the two passes keeps this part of a number below one, and has room for what the filter adds beyond 0
/// and 255.
constexpr int kFractionBits = 6;
constexpr int kRowShift = ResamplingFilter::kFractionBits - kFractionBits;
constexpr int kColumnShift = ResamplingFilter::kFractionBits + kFractionBits;

constexpr std::size_t kBlock = sizeof(Vector);
/// A block of a row may end behind it, and so may the last tap.
constexpr std::size_t kPadding = kBlock;

/// Two weights, over and over.
Vector pairOf(const std::int16_t* weights) {
  std::int32_t pair = 0;
  std::memcpy(&pair, weights, sizeof pair);
  return simde_mm_set1_epi32(pair);
}

Vector rounded(Vector sums, int shift) {
  return simde_mm_sra_epi32(simde_mm_add_epi32(sums, simde_mm_set1_epi32(1 << (shift - 1))),
                            simde_mm_cvtsi32_si128(shift));
}

Vector loadBlock(const std::uint8_t* bytes, std::size_t count) {
  if (count >= kBlock) return simde_mm_loadu_si128(bytes);
  std::array<std::uint8_t, kBlock> part = {};
  std::memcpy(part.data(), bytes, count);
  return simde_mm_loadu_si128(part.data());
}

/// The weighted sums of sixteen components.
class BlockSums {
 public:
  /// Two rows at a time: a component of both, side by side, is what one instruction multiplies and adds.
  void add(Vector upper, Vector lower, Vector weights) {
    const Vector zero = simde_mm_setzero_si128();
    const Vector left = simde_mm_unpacklo_epi8(upper, lower), right = simde_mm_unpackhi_epi8(upper, lower);
    addPairs(0, simde_mm_unpacklo_epi8(left, zero), weights);
    addPairs(1, simde_mm_unpackhi_epi8(left, zero), weights);
    addPairs(2, simde_mm_unpacklo_epi8(right, zero), weights);
    addPairs(3, simde_mm_unpackhi_epi8(right, zero), weights);
  }

  void store(std::int16_t* to) const {
    simde_mm_storeu_si128(to, simde_mm_packs_epi32(rounded(sums_[0], kRowShift), rounded(sums_[1], kRowShift)));
    simde_mm_storeu_si128(to + 8, simde_mm_packs_epi32(rounded(sums_[2], kRowShift), rounded(sums_[3], kRowShift)));
  }

 private:
  void addPairs(std::size_t part, Vector pairs, Vector weights) {
    sums_[part] = simde_mm_add_epi32(sums_[part], simde_mm_madd_epi16(pairs, weights));
  }

  Vector sums_[4] = {};
};

/// The weighted sum of the components of a pixel, `taps` of them in a row.
Vector pixelSums(const std::int16_t* components, const std::int16_t* weights, std::size_t taps) {
  Vector sums = simde_mm_setzero_si128();
  for (std::size_t tap = 0; tap < taps; tap += 2) {
    const Vector both = simde_mm_loadu_si128(components + tap * kBytesPerPixel);
    const Vector pairs = simde_mm_unpacklo_epi16(both, simde_mm_srli_si128(both, 8));
    sums = simde_mm_add_epi32(sums, simde_mm_madd_epi16(pairs, pairOf(weights + tap)));
  }
  return sums;
}

Pixel boundByAlpha(Pixel pixel) {
  const int alpha = componentOf(pixel, kAlphaShift);
  const auto bounded = [&](unsigned shift) {
    return static_cast<Pixel>(std::min(componentOf(pixel, shift), alpha)) << shift;
  };
  return bounded(kBlueShift) | bounded(kGreenShift) | bounded(kRedShift) | bounded(kAlphaShift);
}

}  // namespace

RowScaler::RowScaler(PixelSize from, AlphaMode alpha, PixelSize to)
    : from_(from),
      alpha_(alpha),
      horizontal_(lanczosFilter(from.width, to.width)),
      vertical_(lanczosFilter(from.height, to.height)) {}

RowScaler::Workspace RowScaler::makeWorkspace() const {
  return Workspace(static_cast<std::size_t>(from_.width) * kBytesPerPixel + kPadding);
}

std::size_t RowScaler::endOfRowsFor(std::size_t y) const {
  return std::min(vertical_.first[y] + vertical_.taps, static_cast<std::size_t>(from_.height));
}

void RowScaler::addRows(std::size_t y, const std::uint8_t* const* rows, Workspace& workspace) const {
  const auto bytes = static_cast<std::size_t>(from_.width) * kBytesPerPixel;
  const auto lastRow = static_cast<std::size_t>(from_.height) - 1;
  const auto* const weights = vertical_.weights.data() + y * vertical_.taps;
  for (std::size_t x = 0; x < bytes; x += kBlock) {
    BlockSums block;
    for (std::size_t tap = 0; tap < vertical_.taps; tap += 2) {
      const std::size_t upper = vertical_.first[y] + tap, lower = std::min(upper + 1, lastRow);
      block.add(loadBlock(rows[upper] + x, bytes - x), loadBlock(rows[lower] + x, bytes - x), pairOf(weights + tap));
    }
    block.store(workspace.data() + x);
  }
}

void RowScaler::addColumns(const Workspace& workspace, std::uint8_t* row) const {
  const std::size_t taps = horizontal_.taps;
  const bool isOpaque = alpha_ == AlphaMode::opaque;
  for (std::size_t x = 0; x < horizontal_.first.size(); ++x) {
    const Vector sums = pixelSums(workspace.data() + horizontal_.first[x] * kBytesPerPixel,
                                  horizontal_.weights.data() + x * taps, taps);
    const Vector words = simde_mm_packs_epi32(rounded(sums, kColumnShift), sums);
    const auto pixel = static_cast<Pixel>(simde_mm_cvtsi128_si32(simde_mm_packus_epi16(words, words)));
    writePixel(row, x, isOpaque ? pixel | (0xFFU << kAlphaShift) : boundByAlpha(pixel));
  }
}

void RowScaler::scale(std::size_t y, const std::uint8_t* const* rows, Workspace& workspace, std::uint8_t* row) const {
  addRows(y, rows, workspace);
  addColumns(workspace, row);
}

}  // namespace tavik::platform::imaging
