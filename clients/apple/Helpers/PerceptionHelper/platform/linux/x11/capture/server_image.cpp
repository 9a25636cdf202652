#include "platform/linux/x11/capture/server_image.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

constexpr std::uint32_t kAllPlanes = ~0U;

/// A visual, and the depth of what is drawn in it.
struct VisualOfDepth {
  const xcb_visualtype_t* type = nullptr;
  std::uint8_t depth = 0;
};

VisualOfDepth findVisual(const xcb_screen_t& screen, xcb_visualid_t visual) {
  for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
    const std::span visuals(xcb_depth_visuals(depths.data), depths.data->visuals_len);
    const auto found = std::ranges::find(visuals, visual, &xcb_visualtype_t::visual_id);
    if (found != visuals.end()) return {.type = &*found, .depth = depths.data->depth};
  }
  return {};
}

}  // namespace

std::optional<imaging::PixelFormat> pixelFormat(const XConnection& connection, xcb_visualid_t visual) {
  const auto [type, depth] = findVisual(connection.screen(), visual);
  const auto& setup = connection.setup();
  const std::span layouts(xcb_setup_pixmap_formats(&setup), setup.pixmap_formats_len);
  const auto layout = std::ranges::find(layouts, depth, &xcb_format_t::depth);
  if (layout == layouts.end() || type == nullptr || type->_class != XCB_VISUAL_CLASS_TRUE_COLOR) return std::nullopt;
  return imaging::PixelFormat{.depth = depth,
                              .bitsPerPixel = layout->bits_per_pixel,
                              .scanlinePad = layout->scanline_pad,
                              .mostSignificantFirst = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST,
                              .redMask = type->red_mask,
                              .greenMask = type->green_mask,
                              .blueMask = type->blue_mask};
}

ImageRequest::ImageRequest(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part, SharedPlace place)
    : connection_(connection), size_{part.width, part.height}, place_(std::move(place)) {
  const auto x = static_cast<std::int16_t>(part.x), y = static_cast<std::int16_t>(part.y);
  const auto width = static_cast<std::uint16_t>(part.width), height = static_cast<std::uint16_t>(part.height);
  constexpr std::uint8_t kFormat = XCB_IMAGE_FORMAT_Z_PIXMAP;
  sequence_ = place_.pixels
                  ? xcb_shm_get_image(connection.xcb(), drawable, x, y, width, height, kAllPlanes, kFormat,
                                      place_.segment, place_.offset)
                        .sequence
                  : xcb_get_image(connection.xcb(), kFormat, drawable, x, y, width, height, kAllPlanes).sequence;
}

ImageRequest::~ImageRequest() {
  if (!isAnswered_) xcb_discard_reply(connection_.xcb(), sequence_);
}

std::optional<imaging::Bitmap> ImageRequest::bitmap(const imaging::PixelFormat& format) {
  isAnswered_ = true;
  if (place_.pixels) {
    const auto reply = connection_.reply(xcb_shm_get_image_reply, xcb_shm_get_image_cookie_t{sequence_});
    if (!reply || reply->depth != format.depth) return std::nullopt;
    return imaging::toBitmap(format, size_, place_.pixels, place_.byteCount);
  }
  const std::shared_ptr<xcb_get_image_reply_t> reply =
      connection_.reply(xcb_get_image_reply, xcb_get_image_cookie_t{sequence_});
  if (!reply || reply->depth != format.depth) return std::nullopt;
  const auto byteCount = reply->length * kWordBytes;
  return imaging::toBitmap(format, size_, {reply, xcb_get_image_data(reply.get())}, byteCount);
}

std::optional<imaging::Bitmap> readImage(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part,
                                         xcb_visualid_t visual) {
  const auto format = pixelFormat(connection, visual);
  return format ? ImageRequest(connection, drawable, part).bitmap(*format) : std::nullopt;
}

}  // namespace tavik::platform::x11
