// Compiled once for any processor, and once for those with AVX2; TAVIK_ROW_KERNELS is the function that gives what
// comes of it. Nothing here is to be shared with the rest of the program, or the linker might take for all processors
// what is made for one: neither templates of the standard library nor inline functions of our own.

#include "platform/imaging/row_kernels.h"

#include <cstring>

#include <simde/x86/avx2.h>

#ifndef TAVIK_ROW_KERNELS
#define TAVIK_ROW_KERNELS baselineRowKernels
#endif

namespace tavik::platform::imaging {
namespace {

constexpr int kRowShift = kWeightFractionBits - kRowFractionBits;
constexpr int kColumnShift = kWeightFractionBits + kRowFractionBits;
constexpr std::size_t kComponents = 4;

using Narrow = simde__m128i;

Narrow sum(Narrow left, Narrow right) { return simde_mm_add_epi32(left, right); }
Narrow products(Narrow pairs, Narrow weights) { return simde_mm_madd_epi16(pairs, weights); }

/// Two weights.
std::int32_t twoOf(const std::int16_t* weights) {
  std::int32_t two = 0;
  std::memcpy(&two, weights, sizeof two);
  return two;
}

Narrow narrowPair(const std::int16_t* weights) { return simde_mm_set1_epi32(twoOf(weights)); }

Narrow rounded(Narrow sums, int shift) {
  return simde_mm_sra_epi32(sum(sums, simde_mm_set1_epi32(1 << (shift - 1))), simde_mm_cvtsi32_si128(shift));
}

/// The weighted sum of the components of two pixels side by side.
Narrow twoPixels(const std::int16_t* components, const std::int16_t* weights) {
  const Narrow both = simde_mm_loadu_si128(components);
  return products(simde_mm_unpacklo_epi16(both, simde_mm_unpackhi_epi64(both, both)), narrowPair(weights));
}

#ifdef SIMDE_X86_AVX2_NATIVE

/// What takes vectors apart and puts them together does so with each of their halves.
using Vector = simde__m256i;

Vector load(const std::uint8_t* bytes) { return simde_mm256_loadu_si256(reinterpret_cast<const Vector*>(bytes)); }
Vector zero() { return simde_mm256_setzero_si256(); }
Vector pair(const std::int16_t* weights) { return simde_mm256_set1_epi32(twoOf(weights)); }
Vector lowBytes(Vector left, Vector right) { return simde_mm256_unpacklo_epi8(left, right); }
Vector highBytes(Vector left, Vector right) { return simde_mm256_unpackhi_epi8(left, right); }
Vector sum(Vector left, Vector right) { return simde_mm256_add_epi32(left, right); }
Vector products(Vector pairs, Vector weights) { return simde_mm256_madd_epi16(pairs, weights); }

Vector packed(Vector left, Vector right) {
  const Vector half = simde_mm256_set1_epi32(1 << (kRowShift - 1));
  return simde_mm256_packs_epi32(simde_mm256_srai_epi32(sum(left, half), kRowShift),
                                 simde_mm256_srai_epi32(sum(right, half), kRowShift));
}

void store(Vector left, Vector right, std::int16_t* to) {
  constexpr int kLowHalves = 0x20, kHighHalves = 0x31;
  const Vector both[]{simde_mm256_permute2x128_si256(left, right, kLowHalves),
                      simde_mm256_permute2x128_si256(left, right, kHighHalves)};
  std::memcpy(to, both, sizeof both);
}

/// The weighted sum of the components of a pixel, `taps` of them in a row: four at a time, then two.
Narrow pixelSum(const std::int16_t* components, const std::int16_t* weights, std::size_t taps) {
  Vector sums = zero();
  std::size_t tap = 0;
  for (; tap + 4 <= taps; tap += 4) {
    const Vector four = simde_mm256_loadu_si256(reinterpret_cast<const Vector*>(components + tap * kComponents));
    const Vector twice = simde_mm256_unpacklo_epi16(four, simde_mm256_unpackhi_epi64(four, four));
    sums = sum(sums, products(twice, simde_mm256_set_m128i(narrowPair(weights + tap + 2), narrowPair(weights + tap))));
  }
  const Narrow total = sum(simde_mm256_castsi256_si128(sums), simde_mm256_extracti128_si256(sums, 1));
  return tap < taps ? sum(total, twoPixels(components + tap * kComponents, weights + tap)) : total;
}

#else

using Vector = Narrow;

Vector load(const std::uint8_t* bytes) { return simde_mm_loadu_si128(bytes); }
Vector zero() { return simde_mm_setzero_si128(); }
Vector pair(const std::int16_t* weights) { return narrowPair(weights); }
Vector lowBytes(Vector left, Vector right) { return simde_mm_unpacklo_epi8(left, right); }
Vector highBytes(Vector left, Vector right) { return simde_mm_unpackhi_epi8(left, right); }

Vector packed(Vector left, Vector right) {
  return simde_mm_packs_epi32(rounded(left, kRowShift), rounded(right, kRowShift));
}

void store(Vector left, Vector right, std::int16_t* to) {
  const Vector both[]{left, right};
  std::memcpy(to, both, sizeof both);
}

/// The weighted sum of the components of a pixel, `taps` of them in a row.
Narrow pixelSum(const std::int16_t* components, const std::int16_t* weights, std::size_t taps) {
  Narrow sums = zero();
  for (std::size_t tap = 0; tap < taps; tap += 2) {
    sums = sum(sums, twoPixels(components + tap * kComponents, weights + tap));
  }
  return sums;
}

#endif

constexpr std::size_t kBlock = sizeof(Vector);
static_assert(kBlock <= kRowPadding);

Vector loadBlock(const std::uint8_t* bytes, std::size_t count) {
  if (count >= kBlock) return load(bytes);
  std::uint8_t part[kBlock] = {};
  std::memcpy(part, bytes, count);
  return load(part);
}

/// The weighted sums of as many components as a vector has bytes.
class BlockSums {
 public:
  /// Two rows at a time: a component of both, side by side, is what one instruction multiplies and adds.
  void add(Vector upper, Vector lower, Vector weights) {
    const Vector left = lowBytes(upper, lower), right = highBytes(upper, lower);
    parts_[0] = sum(parts_[0], products(lowBytes(left, zero()), weights));
    parts_[1] = sum(parts_[1], products(highBytes(left, zero()), weights));
    parts_[2] = sum(parts_[2], products(lowBytes(right, zero()), weights));
    parts_[3] = sum(parts_[3], products(highBytes(right, zero()), weights));
  }

  void storeAt(std::int16_t* to) const { store(packed(parts_[0], parts_[1]), packed(parts_[2], parts_[3]), to); }

 private:
  Vector parts_[4] = {zero(), zero(), zero(), zero()};
};

/// Two neighbouring rows; below the last one of the picture there is none, and its weight is 0.
struct RowPair {
  const std::uint8_t* upper;
  const std::uint8_t* lower;
};

RowPair rowPair(const WeightedRows& of, std::size_t tap) {
  const std::size_t upper = of.first + tap;
  return {.upper = of.rows[upper], .lower = of.rows[upper < of.lastRow ? upper + 1 : of.lastRow]};
}

void addRows(const WeightedRows& of, std::size_t bytes, std::int16_t* sums) {
  std::size_t x = 0;
  // Two blocks at once have the addresses and the weights in common.
  for (; bytes - x >= 2 * kBlock; x += 2 * kBlock) {
    BlockSums left, right;
    for (std::size_t tap = 0; tap < of.taps; tap += 2) {
      const auto [upper, lower] = rowPair(of, tap);
      const Vector weights = pair(of.weights + tap);
      left.add(load(upper + x), load(lower + x), weights);
      right.add(load(upper + x + kBlock), load(lower + x + kBlock), weights);
    }
    left.storeAt(sums + x);
    right.storeAt(sums + x + kBlock);
  }
  for (; x < bytes; x += kBlock) {
    BlockSums block;
    for (std::size_t tap = 0; tap < of.taps; tap += 2) {
      const auto [upper, lower] = rowPair(of, tap);
      block.add(loadBlock(upper + x, bytes - x), loadBlock(lower + x, bytes - x), pair(of.weights + tap));
    }
    block.storeAt(sums + x);
  }
}

/// Its highest byte is its alpha, which no other is to exceed.
std::uint32_t boundByAlpha(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24U;
  std::uint32_t bounded = alpha << 24U;
  for (unsigned shift = 0; shift < 24; shift += 8) {
    const std::uint32_t component = pixel >> shift & 0xFFU;
    bounded |= (component < alpha ? component : alpha) << shift;
  }
  return bounded;
}

void addColumns(const std::int16_t* sums, const WeightedColumns& columns, std::uint8_t* row) {
  const WeightedColumns of = columns;
  for (std::size_t x = 0; x < of.count; ++x) {
    const Narrow components =
        rounded(pixelSum(sums + of.first[x] * kComponents, of.weights + x * of.taps, of.taps), kColumnShift);
    const Narrow words = simde_mm_packs_epi32(components, components);
    auto pixel = static_cast<std::uint32_t>(simde_mm_cvtsi128_si32(simde_mm_packus_epi16(words, words)));
    pixel = of.isOpaque ? pixel | 0xFF000000U : boundByAlpha(pixel);
    std::memcpy(row + x * kComponents, &pixel, sizeof pixel);
  }
}

constexpr RowKernels kKernels{.addRows = addRows, .addColumns = addColumns};

}  // namespace

const RowKernels& TAVIK_ROW_KERNELS() { return kKernels; }

}  // namespace tavik::platform::imaging
