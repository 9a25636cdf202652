#include "platform/linux/wayland/sway_tree.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "text/utf8.h"

namespace tavik::platform::wayland {
namespace {

namespace json = boost::json;

// What is missing, or of another type, counts as 0, empty, or false.

std::int64_t number(const json::object& node, std::string_view key) {
  const auto* const value = node.if_contains(key);
  const auto* const integer = value != nullptr ? value->if_int64() : nullptr;
  return integer != nullptr ? *integer : 0;
}

std::string string(const json::object& node, std::string_view key) {
  const auto* const value = node.if_contains(key);
  const auto* const text = value != nullptr ? value->if_string() : nullptr;
  return text != nullptr ? text::toValidUTF8(*text) : "";
}

bool boolean(const json::object& node, std::string_view key) {
  const auto* const value = node.if_contains(key);
  return value != nullptr && value->is_bool() && value->get_bool();
}

const json::object& object(const json::object& node, std::string_view key) {
  static const json::object kNone;
  const auto* const value = node.if_contains(key);
  return value != nullptr && value->is_object() ? value->get_object() : kNone;
}

const json::array& array(const json::object& node, std::string_view key) {
  static const json::array kNone;
  const auto* const value = node.if_contains(key);
  return value != nullptr && value->is_array() ? value->get_array() : kNone;
}

Rect rectangle(const json::object& node, std::string_view key) {
  const auto& rect = object(node, key);
  const auto side = [&rect](std::string_view name) { return static_cast<double>(number(rect, name)); };
  return {.x = side("x"), .y = side("y"), .width = side("width"), .height = side("height")};
}

bool overlap(const Rect& left, const Rect& right) {
  return left.x < right.x + right.width && right.x < left.x + left.width && left.y < right.y + right.height &&
         right.y < left.y + left.height;
}

/// What is drawn in front of what.
enum class Plane : std::uint8_t { tiled, floating, fullscreen };

struct Placed {
  NativeWindow window = {};
  bool isVisible = false;
  Rect outer = {};  ///< with the title bar and the borders
  Plane plane = Plane::tiled;
};

/// Goes through the containers of the tree, in the order in which sway draws them.
class TreeReader {
 public:
  void readOutput(const json::object& output) {
    const auto& focus = array(output, "focus");
    const auto shown = focus.empty() || !focus.front().is_int64() ? -1 : focus.front().get_int64();
    for (const auto& child : array(output, "nodes")) {
      const auto* const workspace = child.if_object();
      if (workspace == nullptr) continue;
      isShown_ = number(*workspace, "id") == shown;
      isScratchpad_ = string(*workspace, "name") == "__i3_scratch";
      readChildren(*workspace, Plane::tiled);
    }
  }

  std::vector<NativeWindow> take() {
    std::ranges::stable_sort(placed_, {}, &Placed::plane);
    std::vector<NativeWindow> windows;
    for (auto placed = placed_.begin(); placed != placed_.end(); ++placed) {
      auto& window = placed->window;
      const auto covers = [&window](const Placed& other) {
        return other.isVisible && overlap(other.outer, window.contents);
      };
      window.isCovered = !placed->isVisible || std::any_of(std::next(placed), placed_.end(), covers);
      windows.insert(windows.begin(), window);
    }
    return windows;
  }

 private:
  void readChildren(const json::object& node, Plane plane) {
    for (const auto& child : array(node, "nodes")) read(child, plane);
    for (const auto& child : array(node, "floating_nodes")) read(child, Plane::floating);
  }

  void read(const json::value& child, Plane plane) {
    const auto* const node = child.if_object();
    if (node == nullptr) return;
    if (number(*node, "fullscreen_mode") != 0) plane = Plane::fullscreen;
    const bool isWindow = number(*node, "pid") > 0;
    isWindow ? addWindow(*node, plane) : readChildren(*node, plane);
  }

  void addWindow(const json::object& node, Plane plane) {
    const auto rect = rectangle(node, "rect");
    const auto inner = rectangle(node, "window_rect");
    const double title = rectangle(node, "deco_rect").height;
    const auto& x11 = object(node, "window_properties");
    const bool isVisible = boolean(node, "visible");
    placed_.push_back(
        {.window =
             {.id = static_cast<std::uint32_t>(number(node, "id")) & ~kNativeWindowBit,
              .toplevelID = string(node, "foreign_toplevel_identifier"),
              .processID = static_cast<std::int32_t>(number(node, "pid")),
              .title = string(node, "name"),
              .appID = string(node, "app_id"),
              .instanceName = string(x11, "instance"),
              .className = string(x11, "class"),
              .isX11 = string(node, "shell") == "xwayland",
              .contents = {.x = rect.x + inner.x, .y = rect.y + inner.y, .width = inner.width, .height = inner.height},
              .isFocused = boolean(node, "focused"),
              .isMinimized = isScratchpad_,
              .isOnOtherWorkspace = !isVisible && !isShown_ && !isScratchpad_},
         .isVisible = isVisible,
         .outer = {.x = rect.x, .y = rect.y - title, .width = rect.width, .height = rect.height + title},
         .plane = plane});
  }

  bool isShown_ = false;       ///< the workspace that is being read
  bool isScratchpad_ = false;  ///< it is where sway keeps what is put out of sight
  std::vector<Placed> placed_;
};

}  // namespace

std::optional<std::vector<NativeWindow>> windowsOfSwayTree(std::string_view tree) {
  constexpr std::size_t kDepth = 256;  // two for each container within another
  json::parse_options options;
  options.max_depth = kDepth;
  json::monotonic_resource memory;
  json::error_code error;
  const auto root = json::parse(tree, error, &memory, options);
  if (error || !root.is_object()) return std::nullopt;
  TreeReader reader;
  for (const auto& output : array(root.get_object(), "nodes")) {
    if (output.is_object()) reader.readOutput(output.get_object());
  }
  return reader.take();
}

}  // namespace tavik::platform::wayland
