#pragma once

#include <cstddef>
#include <cstdint>

namespace tavik::platform::imaging {

/// A row between the two passes keeps this part of a number below one, and has room for what the filter adds beyond 0
/// and 255.
inline constexpr int kRowFractionBits = 6;

/// So do weights.
inline constexpr int kWeightFractionBits = 14;

/// A block of a row may end so many bytes behind it, and so may the last tap.
inline constexpr std::size_t kRowPadding = 32;

/// Neighbouring rows of a picture, with a weight each. There is an even number; the last one may lie behind the last of
/// the picture, and then has no weight.
struct WeightedRows {
  const std::uint8_t* const* rows = nullptr;  ///< of the picture
  std::size_t lastRow = 0;
  std::size_t first = 0;
  const std::int16_t* weights = nullptr;
  std::size_t taps = 0;
};

/// For each pixel of a row, neighbouring pixels of a longer or shorter one, with a weight each.
struct WeightedColumns {
  const std::size_t* first = nullptr;  ///< for each
  const std::int16_t* weights = nullptr;
  std::size_t taps = 0;  ///< an even number
  std::size_t count = 0;
  bool isOpaque = true;
};

/// The two loops of the scaler.
struct RowKernels {
  /// Adds up the rows' first `bytes` bytes.
  void (*addRows)(const WeightedRows& rows, std::size_t bytes, std::int16_t* sums);
  /// Adds up pixels of such sums, and writes the row.
  void (*addColumns)(const std::int16_t* sums, const WeightedColumns& columns, std::uint8_t* row);
};

/// Those for any processor of this architecture.
const RowKernels& baselineRowKernels();
#ifdef __x86_64__
/// Those for one with AVX2.
const RowKernels& avx2RowKernels();
#endif

}  // namespace tavik::platform::imaging
