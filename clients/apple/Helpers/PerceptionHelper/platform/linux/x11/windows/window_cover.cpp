#include "platform/linux/x11/windows/window_cover.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include <xcb/shape.h>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/windows/outer_rect.h"
#include "platform/linux/x11/windows/window_tree.h"

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

/// The questions about one window's outline, in flight at once.
struct OutlineQuery {
  xcb_get_window_attributes_cookie_t attributes = {};
  xcb_get_geometry_cookie_t geometry = {};
  xcb_shape_query_extents_cookie_t extents = {};
  xcb_shape_get_rectangles_cookie_t shape = {};
};

OutlineQuery requestOutline(XConnection& connection, xcb_window_t window) {
  OutlineQuery query{.attributes = xcb_get_window_attributes(connection.xcb(), window),
                     .geometry = xcb_get_geometry(connection.xcb(), window)};
  if (connection.hasExtension(xcb_shape_id)) {
    query.extents = xcb_shape_query_extents(connection.xcb(), window);
    query.shape = xcb_shape_get_rectangles(connection.xcb(), window, XCB_SHAPE_SK_BOUNDING);
  }
  return query;
}

/// The answers. Every reply is taken, also of a window that shows nothing: xcb searches those left behind for each
/// later one.
struct OutlineAnswer {
  MallocPtr<xcb_get_window_attributes_reply_t> attributes = {};
  MallocPtr<xcb_get_geometry_reply_t> geometry = {};
  MallocPtr<xcb_shape_query_extents_reply_t> extents = {};
  MallocPtr<xcb_shape_get_rectangles_reply_t> shape = {};
};

OutlineAnswer receiveAnswer(XConnection& connection, const OutlineQuery& query) {
  OutlineAnswer answer{.attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes),
                       .geometry = connection.reply(xcb_get_geometry_reply, query.geometry)};
  if (connection.hasExtension(xcb_shape_id)) {
    answer.extents = connection.reply(xcb_shape_query_extents_reply, query.extents);
    answer.shape = connection.reply(xcb_shape_get_rectangles_reply, query.shape);
  }
  return answer;
}

/// The bounding shape within a rectangle with a border of this width. The rectangles count from the corner inside of
/// the border. An unshaped window's are not used: the X.Org server leaves part of the border out of them.
std::vector<PixelRect> shapeOf(const OutlineAnswer& answer, const PixelRect& whole, std::int32_t border) {
  const auto& [attributes, geometry, extents, shape] = answer;
  const bool isShaped = extents && extents->bounding_shaped != 0;
  if (!isShaped || !shape || shape->rectangles_len > shape->length / 2) return {whole};
  std::vector<PixelRect> parts;
  for (const auto& [x, y, width, height] :
       std::span(xcb_shape_get_rectangles_rectangles(shape.get()), shape->rectangles_len)) {
    parts.push_back(
        imaging::movedBy({.x = x, .y = y, .width = width, .height = height}, whole.x + border, whole.y + border));
  }
  return intersection({whole}, parts);
}

/// None for a window that shows nothing.
Outline receiveOutline(XConnection& connection, const OutlineQuery& query) {
  const auto answer = receiveAnswer(connection, query);
  const auto& attributes = answer.attributes;
  if (!attributes || !answer.geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
      attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
    return {};
  }
  return shapeOf(answer, outerRect(*answer.geometry), answer.geometry->border_width);
}

/// An outline as one rectangle around it when it has so many parts, beside the other's, that comparing them would take
/// long: then more counts as covered than is.
Outline simplified(Outline outline, std::size_t othersParts) {
  constexpr std::size_t kManyPairs = 1'000'000;
  if (outline.size() <= 1 || outline.size() <= kManyPairs / std::max<std::size_t>(othersParts, 1)) return outline;
  auto whole = outline.front();
  for (const auto& part : outline) {
    const auto right = std::max(whole.x + whole.width, part.x + part.width);
    const auto bottom = std::max(whole.y + whole.height, part.y + part.height);
    whole.x = std::min(whole.x, part.x);
    whole.y = std::min(whole.y, part.y);
    whole.width = right - whole.x;
    whole.height = bottom - whole.y;
  }
  return {whole};
}

/// The children of the root above this one.
std::vector<xcb_window_t> windowsAbove(XConnection& connection, xcb_window_t frame) {
  const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.xcb(), connection.root()));
  const auto children = tree ? childrenOfReply(*tree) : std::vector<xcb_window_t>{};
  const auto own = std::ranges::find(children, frame);
  return own != children.end() ? std::vector(own + 1, children.end()) : std::vector<xcb_window_t>{};
}

}  // namespace

std::vector<Outline> outlinesOf(XConnection& connection, const std::vector<xcb_window_t>& windows) {
  std::vector<OutlineQuery> queries;
  queries.reserve(windows.size());
  for (const auto window : windows) queries.push_back(requestOutline(connection, window));
  std::vector<Outline> outlines;
  outlines.reserve(windows.size());
  for (const auto& query : queries) outlines.push_back(receiveOutline(connection, query));
  return outlines;
}

std::vector<PixelRect> hiddenParts(const XConnection& connection, std::span<const Outline> above,
                                   const Outline& outline) {
  const auto& screen = connection.screen();
  auto hidden = subtract(outline, {.width = screen.width_in_pixels, .height = screen.height_in_pixels});
  for (const auto& other : above) {
    const auto covered = intersection(outline, simplified(other, outline.size()));
    hidden.insert(hidden.end(), covered.begin(), covered.end());
  }
  return hidden;
}

std::vector<PixelRect> hiddenParts(XConnection& connection, xcb_window_t frame, const Outline& outline) {
  return hiddenParts(connection, outlinesOf(connection, windowsAbove(connection, frame)), outline);
}

}  // namespace tavik::platform::x11
