#pragma once

#include <cstdint>
#include <optional>

/// Points, sizes and rectangles as the platform reports them: global screen coordinates in points, y downwards, never
/// checked.
namespace tavik::platform {

struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  double width = 0;
  double height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;
};

/// `number` truncated toward zero; nothing when it is not finite or does not fit 64 bits.
constexpr std::optional<std::int64_t> truncated(double number) {
  constexpr double kLimit = 0x1p63;
  if (!(number >= -kLimit && number < kLimit)) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

}  // namespace tavik::platform
