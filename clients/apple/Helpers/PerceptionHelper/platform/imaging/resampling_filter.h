#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/imaging/row_kernels.h"

namespace tavik::platform::imaging {

/// How a line of pixels gets another length. Place p of the new line is the weighted sum of `taps` neighbouring pixels
/// of the old one, starting at `first[p]`; its weights, from `weights[p * taps]` on, add up to exactly kOne, so that a
/// plain line stays plain. `taps` is even; the last tap may lie beyond the end of the old line and then has no weight.
struct ResamplingFilter {
  static constexpr std::int32_t kOne = 1 << kWeightFractionBits;

  std::size_t taps = 0;
  std::vector<std::size_t> first = {};
  std::vector<std::int16_t> weights = {};
};

/// The Lanczos filter of three lobes, widened when shrinking; the old line is mirrored at its ends. Both lengths are at
/// least 1. Throws std::bad_alloc.
ResamplingFilter lanczosFilter(std::int64_t from, std::int64_t to);

}  // namespace tavik::platform::imaging
