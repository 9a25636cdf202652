#include "platform/imaging/scaling.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>

#include <gtest/gtest.h>

#include "platform/imaging/pictures.h"

namespace tavik::platform::imaging {
namespace {

using Row = std::vector<double>;

double lanczos3(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= 3) return 0;
  const double angle = std::numbers::pi * x;
  return 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// A row at another length, by the definition: the filter widened when shrinking, the picture mirrored at its edges.
Row resampled(const Row& from, std::int64_t length) {
  const auto count = static_cast<int>(from.size());
  const double step = static_cast<double>(count) / static_cast<double>(length);
  const double widening = std::max(step, 1.0);
  Row to;
  for (int i = 0; i < length; ++i) {
    const double centre = (i + 0.5) * step - 0.5;
    double sum = 0, weights = 0;
    for (int tap = static_cast<int>(centre - 3 * widening) - 1; tap <= centre + 3 * widening; ++tap) {
      const double weight = lanczos3((tap - centre) / widening);
      const int mirrored = tap < 0 ? -tap - 1 : tap >= count ? 2 * count - 1 - tap : tap;
      sum += weight * from[static_cast<std::size_t>(std::clamp(mirrored, 0, count - 1))];
      weights += weight;
    }
    to.push_back(sum / weights);
  }
  return to;
}

/// How near the colour is to the reference, in decibels; rounding to bytes alone leaves about 59.
double peakSignalToNoise(const Bitmap& actual, const Bitmap& source) {
  double squares = 0;
  for (const std::size_t component : {0U, 1U, 2U}) {
    std::vector<Row> wide;
    for (int y = 0; y < source.size.height; ++y) {
      Row row;
      for (int x = 0; x < source.size.width; ++x) row.push_back(pixelOf(source, x, y)[component]);
      wide.push_back(resampled(row, actual.size.width));
    }
    for (int x = 0; x < actual.size.width; ++x) {
      Row column;
      for (const Row& row : wide) column.push_back(row[static_cast<std::size_t>(x)]);
      for (int y = 0; const double value : resampled(column, actual.size.height))
        squares += std::pow(pixelOf(actual, x, y++)[component] - std::clamp(value, 0.0, 255.0), 2);
    }
  }
  return 10 * std::log10(255 * 255 * 3 * static_cast<double>(actual.size.width * actual.size.height) / squares);
}

TEST(Scaling, FollowsTheDefinitionOfTheFilter) {
  using Case = std::tuple<std::string, PixelSize, PixelSize, Painter>;
  for (const auto& [reason, from, to, paint] : {
           Case{"noise, all frequencies", {128, 72}, {53, 30}, noise},
           Case{"text", {160, 90}, {100, 56}, textLike},
           Case{"another proportion: narrower and higher", {90, 20}, {31, 47}, textLike},
           Case{"rows a multiple of 4096 bytes long", {1024, 6}, {640, 4}, noise},
           Case{"the same size", {33, 17}, {33, 17}, noise},
           Case{"one row", {200, 1}, {80, 1}, noise},
           Case{"one column", {1, 200}, {1, 80}, noise},
       }) {
    const Bitmap source = painted(from, AlphaMode::opaque, paint);
    const auto result = scaled(source, to);
    ASSERT_TRUE(result) << reason;
    EXPECT_EQ(result->size, to) << reason;
    EXPECT_GT(peakSignalToNoise(*result, source), 55) << reason;
  }
}

TEST(Scaling, KeepsAPlainColourExactly) {
  for (const PixelSize size : {PixelSize{1, 1}, {1, 400}, {400, 1}, {19, 31}}) {
    for (const BGRA colour : {BGRA{0, 0, 0, 0}, BGRA{1, 2, 3, 77}, BGRA{254, 255, 128, 255}}) {
      const Painter plain = [&](int, int) { return colour; };
      const auto result = scaled(painted({61, 43}, AlphaMode::premultiplied, plain), size).value();
      EXPECT_EQ(worstDifference(result, plain), 0) << size.width << " x " << size.height;
    }
  }
}

TEST(Scaling, NeverLiftsColourAboveItsAlpha) {
  const Painter squares = [](int x, int y) -> BGRA {
    const std::uint8_t alpha = x / 9 % 2 == 0 ? 200 : 20;
    return {alpha, y / 7 % 2 == 0 ? alpha : std::uint8_t{0}, 0, alpha};
  };
  const auto result = scaled(painted({90, 70}, AlphaMode::premultiplied, squares), {37, 29}).value();
  int overshoots = 0;
  for (int i = 0; i < 37 * 29; ++i) {
    const auto [blue, green, red, alpha] = pixelOf(result, i % 37, i / 37);
    EXPECT_LE(std::max({blue, green, red}), alpha) << i;
    overshoots += alpha > 200;
  }
  EXPECT_GT(overshoots, 0) << "the pattern tests nothing";
}

}  // namespace
}  // namespace tavik::platform::imaging
