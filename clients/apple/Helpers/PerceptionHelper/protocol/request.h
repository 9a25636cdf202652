#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "protocol/raw_values.h"

namespace tavik {

/// How closely the helper looks.
enum class Level : std::uint8_t { auto_, ax_only, glance, read, pixel_perfect };

template <>
struct RawValues<Level> {
  static constexpr std::array<std::string_view, 5> kSpellings{"auto", "ax_only", "glance", "read", "pixel_perfect"};
};
static_assert(rawValue(Level::pixel_perfect) == "pixel_perfect");

/// What the helper looks at.
enum class Target : std::uint8_t { app, focused_element, screen, region };

template <>
struct RawValues<Target> {
  static constexpr std::array<std::string_view, 4> kSpellings{"app", "focused_element", "screen", "region"};
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

/// What the caller asks for, as sent: each member is absent unless its key came with a value that is not null. The
/// default-constructed request is the empty one.
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

template <class Value>
struct RequestMember {
  std::string_view key = {};  ///< in the JSON object
  std::optional<Value> Request::*member = nullptr;
};
template <class Value>
RequestMember(std::string_view, std::optional<Value> Request::*) -> RequestMember<Value>;

/// Every member of Request, in its order.
inline constexpr std::tuple kRequestMembers{
    RequestMember{"level", &Request::level},
    RequestMember{"target", &Request::target},
    RequestMember{"region", &Request::region},
    RequestMember{"include_image", &Request::include_image},
    RequestMember{"include_ax_tree", &Request::include_ax_tree},
    RequestMember{"include_caption", &Request::include_caption},
    RequestMember{"max_long_edge_px", &Request::max_long_edge_px},
    RequestMember{"format", &Request::format},
    RequestMember{"app_bundle_id", &Request::app_bundle_id},
    RequestMember{"app_name", &Request::app_name},
    RequestMember{"allow_focus_steal", &Request::allow_focus_steal},
};

template <std::size_t... Index>
constexpr bool hasAsManyMembers(std::index_sequence<Index...>) {
  return requires { Request{(static_cast<void>(Index), std::nullopt)...}; };
}
static_assert(!hasAsManyMembers(std::make_index_sequence<std::tuple_size_v<decltype(kRequestMembers)> + 1>()),
              "the table misses a member of Request");

}  // namespace tavik
