#include "platform/linux/x11/capture/server_image.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen, std::uint8_t depth, xcb_visualid_t visual) {
  for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
    if (depths.data->depth != depth) continue;
    const std::span visuals(xcb_depth_visuals(depths.data), depths.data->visuals_len);
    const auto found =
        std::ranges::find_if(visuals, [&](const xcb_visualtype_t& candidate) { return candidate.visual_id == visual; });
    if (found != visuals.end()) return &*found;
  }
  return nullptr;
}

}  // namespace

std::optional<imaging::PixelFormat> pixelFormat(const XConnection& connection, std::uint8_t depth,
                                                xcb_visualid_t visual) {
  const auto& setup = connection.setup();
  const std::span layouts(xcb_setup_pixmap_formats(&setup), setup.pixmap_formats_len);
  const auto layout = std::ranges::find_if(layouts, [&](const xcb_format_t& format) { return format.depth == depth; });
  const auto* const type = findVisual(connection.screen(), depth, visual);
  if (layout == layouts.end() || type == nullptr || type->_class != XCB_VISUAL_CLASS_TRUE_COLOR) return std::nullopt;
  return imaging::PixelFormat{.depth = depth,
                              .bitsPerPixel = layout->bits_per_pixel,
                              .scanlinePad = layout->scanline_pad,
                              .mostSignificantFirst = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST,
                              .redMask = type->red_mask,
                              .greenMask = type->green_mask,
                              .blueMask = type->blue_mask};
}

std::optional<imaging::Bitmap> readImage(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part,
                                         xcb_visualid_t visual) {
  constexpr std::uint32_t kAllPlanes = ~0U;
  const PixelSize size{part.width, part.height};
  const auto cookie =
      xcb_get_image(connection.xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(part.x),
                    static_cast<std::int16_t>(part.y), static_cast<std::uint16_t>(part.width),
                    static_cast<std::uint16_t>(part.height), kAllPlanes);
  const std::shared_ptr<xcb_get_image_reply_t> reply = connection.reply(xcb_get_image_reply, cookie);
  const auto format = reply ? pixelFormat(connection, reply->depth, visual) : std::nullopt;
  if (!format) return std::nullopt;
  const auto byteCount = reply->length * kWordBytes;
  return imaging::toBitmap(*format, size, {reply, xcb_get_image_data(reply.get())}, byteCount);
}

}  // namespace tavik::platform::x11
