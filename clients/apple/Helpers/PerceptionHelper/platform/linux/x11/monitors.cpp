#include "platform/linux/x11/monitors.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include <xcb/randr.h>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_property.h"

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

/// One that somebody has set by hand may reach beyond the root window, where there are no pixels.
std::vector<Monitor> monitorsOfReply(const xcb_randr_get_monitors_reply_t& reply, const PixelRect& root) {
  std::vector<Monitor> monitors;
  auto left = reply.length * kWordBytes;
  auto items = xcb_randr_get_monitors_monitors_iterator(&reply);
  for (; items.rem > 0 && left >= sizeof *items.data; xcb_randr_monitor_info_next(&items)) {
    const auto& item = *items.data;
    const auto size = sizeof item + std::size_t{item.nOutput} * sizeof(xcb_randr_output_t);
    if (size > left) break;
    left -= size;
    const PixelRect whole{.x = item.x, .y = item.y, .width = item.width, .height = item.height};
    Monitor monitor{.displayID = item.name, .rect = intersection(whole, root)};
    if (item.nOutput > 0) monitor.output = *xcb_randr_monitor_info_outputs(&item);
    if (!isEmpty(monitor.rect)) monitors.insert(item.primary != 0 ? monitors.begin() : monitors.end(), monitor);
  }
  return monitors;
}

/// A server without RandR 1.5 fails this request.
std::optional<std::vector<Monitor>> randrMonitors(XConnection& connection, const PixelRect& root) {
  if (!connection.hasExtension(xcb_randr_id)) return std::nullopt;
  constexpr std::uint8_t kOnlyActive = 1;
  xcb_discard_reply(connection.xcb(), xcb_randr_query_version(connection.xcb(), 1, 5).sequence);
  const auto cookie = xcb_randr_get_monitors(connection.xcb(), connection.root(), kOnlyActive);
  const auto reply = connection.reply(xcb_randr_get_monitors_reply, cookie);
  return reply ? std::optional(monitorsOfReply(*reply, root)) : std::nullopt;
}

}  // namespace

std::vector<Monitor> monitors(XConnection& connection) {
  if (!connection.isReachable()) return {};
  const auto& screen = connection.screen();
  const PixelRect root{.width = screen.width_in_pixels, .height = screen.height_in_pixels};
  if (auto found = randrMonitors(connection, root)) return *std::move(found);
  if (!connection.isReachable()) return {};
  return {{.displayID = screen.root, .rect = root}};
}

}  // namespace tavik::platform::x11
