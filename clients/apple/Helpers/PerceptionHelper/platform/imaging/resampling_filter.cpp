#include "platform/imaging/resampling_filter.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <span>

namespace tavik::platform::imaging {
namespace {

constexpr double kLobes = 3;

/// The filter of three lobes, sinc(x) sinc(x/3) (C. E. Duchon, "Lanczos Filtering in One and Two Dimensions", 1979), of
/// the angle pi x/3 and its sine s: sin(pi x) is 3s - 4s^3.
double lanczos(double angle, double sine) {
  if (std::abs(angle) < 1e-6) return 1;
  if (std::abs(angle) >= std::numbers::pi) return 0;
  const double sinc = sine / angle;
  return sinc * sinc * (1 - 4 * sine * sine / 3);
}

std::int64_t mirrored(std::int64_t place, std::int64_t length) {
  const std::int64_t inside = place < 0 ? -place - 1 : place >= length ? 2 * length - 1 - place : place;
  return std::clamp<std::int64_t>(inside, 0, length - 1);
}

/// The weights in units of 1/kOne. Their sums up to each place are rounded, not each alone: of thousands of small
/// weights the errors would add up.
void inWholeUnits(std::span<const double> weights, std::span<std::int16_t> units) {
  const double scale = ResamplingFilter::kOne / std::accumulate(weights.begin(), weights.end(), 0.0);
  double sum = 0;
  std::int64_t given = 0;
  std::ranges::transform(weights, units.begin(), [&](double weight) {
    sum += weight * scale;
    const auto unit = std::llround(sum) - given;
    given += unit;
    return static_cast<std::int16_t>(unit);
  });
}

}  // namespace

ResamplingFilter lanczosFilter(std::int64_t from, std::int64_t to) {
  const double step = static_cast<double>(from) / static_cast<double>(to);
  const double widening = std::max(step, 1.0);
  const double reach = kLobes * widening;
  const double angleOfStep = std::numbers::pi / reach;
  const auto turn = std::polar(1.0, angleOfStep);
  const auto window = static_cast<std::int64_t>(2 * reach) + 1;
  const auto taps = std::min(from, window);
  const auto places = static_cast<std::size_t>(to);
  ResamplingFilter filter{.taps = static_cast<std::size_t>(taps + taps % 2)};
  filter.first.resize(places);
  filter.weights.resize(places * filter.taps);
  std::vector<double> weights(static_cast<std::size_t>(taps));
  for (std::size_t place = 0; place < places; ++place) {
    const double centre = (static_cast<double>(place) + 0.5) * step - 0.5;
    const auto begin = static_cast<std::int64_t>(std::ceil(centre - reach));
    const auto first = std::clamp<std::int64_t>(begin, 0, from - taps);
    const auto angleOf = [&](std::int64_t tap) { return (static_cast<double>(tap) - centre) * angleOfStep; };
    auto direction = std::polar(1.0, angleOf(begin));  // turned from tap to tap: faster than a sine for each
    std::ranges::fill(weights, 0.0);
    for (std::int64_t tap = begin; tap < begin + window; ++tap, direction *= turn) {
      weights[static_cast<std::size_t>(mirrored(tap, from) - first)] += lanczos(angleOf(tap), direction.imag());
    }
    inWholeUnits(weights, std::span(filter.weights).subspan(place * filter.taps, weights.size()));
    filter.first[place] = static_cast<std::size_t>(first);
  }
  return filter;
}

}  // namespace tavik::platform::imaging
