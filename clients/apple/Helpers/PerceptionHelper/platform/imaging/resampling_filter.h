#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavik::platform::imaging {

/// For every place of a line what it is made of when the line gets another length: `taps` values in a row of the old
/// line, from `first[place]` on, each with its weight. The weights of a place, `taps` of them from `place * taps` on,
/// are in units of 1/kOne and have exactly the sum kOne, so that a plain line stays what it is. `taps` is even; the
/// last tap may lie beyond the end of the old line and then has no weight.
struct ResamplingFilter {
  static constexpr int kFractionBits = 14;
  static constexpr std::int32_t kOne = 1 << kFractionBits;

  std::size_t taps = 0;
  std::vector<std::size_t> first = {};
  std::vector<std::int16_t> weights = {};
};

/// The Lanczos filter of three lobes, widened when shrinking; the old line is mirrored at its ends. Both lengths are at
/// least 1. Throws std::bad_alloc.
ResamplingFilter lanczosFilter(std::int64_t from, std::int64_t to);

}  // namespace tavik::platform::imaging
