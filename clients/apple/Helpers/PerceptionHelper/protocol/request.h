#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/raw_values.h"

namespace tavik {

/// How closely the helper looks.
enum class Level : std::uint8_t { auto_, ax_only, glance, read, pixel_perfect };

template <>
struct RawValues<Level> {
  static constexpr std::array<std::string_view, 5> spellings{"auto", "ax_only", "glance", "read", "pixel_perfect"};
};
static_assert(rawValue(Level::pixel_perfect) == "pixel_perfect");

/// What the helper looks at.
enum class Target : std::uint8_t { app, focused_element, screen, region };

template <>
struct RawValues<Target> {
  static constexpr std::array<std::string_view, 4> spellings{"app", "focused_element", "screen", "region"};
};
static_assert(rawValue(Target::region) == "region");

/// A rectangle of the display, in its own coordinates (points, y downwards). Not checked: it may be empty, negative or
/// elsewhere.
struct Region {
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t w = 0;
  std::int64_t h = 0;
  bool operator==(const Region&) const = default;
};

/// What the caller asks for, as sent: each member is named as its JSON key and absent unless the key came with a value
/// that is not null. The default-constructed request is the empty one.
struct Request {
  std::optional<Level> level = {};
  std::optional<Target> target = {};
  std::optional<Region> region = {};  ///< for Target::region
  std::optional<bool> include_image = {};
  std::optional<bool> include_ax_tree = {};
  std::optional<bool> include_caption = {};           ///< accepted, without effect
  std::optional<std::int64_t> max_long_edge_px = {};  ///< the image's longer side, in pixels; below 1 means no limit
  std::optional<std::string> format = {};             ///< "png" or "jpeg"
  std::optional<std::string> app_bundle_id = {};
  std::optional<std::string> app_name = {};
  std::optional<bool> allow_focus_steal = {};  ///< accepted, without effect
  bool operator==(const Request&) const = default;
};

}  // namespace tavik
