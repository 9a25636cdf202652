#include "platform/linux/x11/capture/window_capture.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include <xcb/composite.h>
#include <xcb/damage.h>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/capture/copied_image.h"
#include "platform/linux/x11/capture/offscreen_window.h"
#include "platform/linux/x11/capture/server_image.h"
#include "platform/linux/x11/capture/window_pixmap.h"
#include "platform/linux/x11/server/selection_owner.h"
#include "platform/linux/x11/windows/window_cover.h"

namespace tavik::platform::x11 {

using imaging::BandedPicture;
using imaging::Bitmap;
using imaging::PixelRect;

namespace {

/// What of which window is read.
struct Surface {
  xcb_window_t frame = XCB_NONE;
  xcb_visualid_t visual = XCB_NONE;
  std::uint8_t depth = 0;
  std::int32_t border = 0;
  PixelRect outer = {};    ///< with the border
  PixelRect visible = {};  ///< what is wanted of it
  PixelRect client = {};   ///< what the application draws
  DecorationPlace decorationPlace = DecorationPlace::inFrame;
  std::vector<PixelRect> outline = {};  ///< of the frame, as far as it is wanted
};

std::optional<Surface> surfaceOf(XConnection& connection, const ManagedWindow& window) {
  const auto attributesCookie = xcb_get_window_attributes(connection.xcb(), window.frame);
  const auto geometryCookie = xcb_get_geometry(connection.xcb(), window.frame);
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, attributesCookie);
  const auto geometry = connection.reply(xcb_get_geometry_reply, geometryCookie);
  if (!attributes || !geometry) return std::nullopt;
  const auto visible = visibleRect(window);
  Surface surface{.frame = window.frame,
                  .visual = attributes->visual,
                  .depth = geometry->depth,
                  .border = geometry->border_width,
                  .outer = window.frameRect,
                  .visible = visible,
                  .client = window.clientRect,
                  .decorationPlace = window.decorationPlace,
                  .outline = intersection(outlinesOf(connection, {window.frame}).front(), {visible})};
  return surface.outline.empty() ? std::nullopt : std::optional(surface);
}

/// Under a compositing manager every window has a pixmap that holds all of it; without one, those with an alpha channel
/// have. Any other has one only as long as somebody reads it as we do, and may be waiting to be drawn.
bool isKeptInMemory(XConnection& connection, const Surface& surface) {
  constexpr std::uint8_t kAlphaDepth = 32;
  if (surface.depth == kAlphaDepth && connection.screen().root_depth != kAlphaDepth) return true;
  return selectionOwner(connection, Atom::compositingManager) != XCB_NONE;
}

/// Waits while another program has the window drawn into memory. False when that does not end in time.
bool waitForOtherReaders(XConnection& connection, const Surface& surface, Clock::time_point end) {
  while (WindowPixmap(connection, surface.frame).exists()) {
    if (Clock::now() >= end) return false;
    const XWatchdog::Pause pause(connection.watchdog());
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

std::optional<BandedPicture> inOnePiece(std::optional<Bitmap> bitmap) {
  return bitmap ? std::optional(imaging::banded(*std::move(bitmap))) : std::nullopt;
}

std::optional<BandedPicture> readPixmap(XConnection& connection, const Surface& surface, const PixelRect& part) {
  if (!connection.hasExtension(xcb_composite_id)) return std::nullopt;
  const WindowPixmap pixmap(connection, surface.frame);
  return copyImage(connection, pixmap.get(), movedBy(part, -surface.outer.x, -surface.outer.y), surface.visual);
}

std::vector<PixelRect> hiddenParts(XConnection& connection, const Surface& surface) {
  return hiddenParts(connection, surface.frame, surface.outline);
}

/// From the screen, unless something may have come over the window meanwhile: what is hidden there comes as black.
std::optional<BandedPicture> readScreen(XConnection& connection, const Surface& surface, StructureWatch& watch) {
  const auto part = movedBy(surface.visible, -surface.outer.x - surface.border, -surface.outer.y - surface.border);
  auto picture = surface.border == 0 ? copyImage(connection, surface.frame, part, surface.visual)
                                     : inOnePiece(readImage(connection, surface.frame, part, surface.visual));
  watch.update();
  return watch.otherHasChanged() ? std::nullopt : picture;
}

/// The client from its pixmap, and its decorations from the screen, the one place where they are.
std::optional<BandedPicture> readWithDecoration(XConnection& connection, const Surface& surface,
                                                StructureWatch& watch) {
  const auto client = intersection(surface.client, surface.visible);
  const auto decoration = subtract({surface.visible}, client);
  std::vector<imaging::PlacedBitmap> parts;
  const auto add = [&](std::optional<Bitmap> bitmap, const PixelRect& part) {
    if (bitmap) parts.push_back({*std::move(bitmap), part.x - surface.visible.x, part.y - surface.visible.y});
  };
  watch.update();
  watch.forgetOthers();
  if (!hiddenParts(connection, surface.frame, decoration).empty()) return std::nullopt;
  const auto drawn = readPixmap(connection, surface, client);
  add(drawn ? imaging::joined(*drawn) : std::nullopt, client);
  for (const auto& part : decoration) {
    add(readImage(connection, connection.root(), part, connection.screen().root_visual), part);
  }
  watch.update();
  const bool isWhole = parts.size() == decoration.size() + 1 && !watch.otherHasChanged();
  return isWhole ? inOnePiece(onBlack(parts, {surface.visible.width, surface.visible.height})) : std::nullopt;
}

/// By having the window draw what is hidden: one program at a time, or the second would wait for drawing that was done
/// for the first.
std::optional<BandedPicture> readRepainted(XConnection& connection, const Surface& surface, StructureWatch& watch,
                                           std::int32_t processID) {
  if (!connection.hasExtension(xcb_composite_id) || !connection.hasExtension(xcb_damage_id)) return std::nullopt;
  const auto toOwn = [&](const PixelRect& rect) {
    return movedBy(rect, -surface.outer.x - surface.border, -surface.outer.y - surface.border);
  };
  // The server draws the border, and reports no drawing there.
  const PixelRect inner{.width = surface.outer.width - 2 * surface.border,
                        .height = surface.outer.height - 2 * surface.border};
  const auto end = deadlineIn(std::chrono::milliseconds(2500));
  while (Clock::now() < end && waitForOtherReaders(connection, surface, end)) {
    watch.forgetOthers();
    auto hidden = hiddenParts(connection, surface);
    std::ranges::transform(hidden, hidden.begin(), toOwn);
    OffscreenWindow offscreen(connection, surface.frame);
    if (!offscreen.isForUs()) continue;
    const RepaintProgress progress(intersection(hidden, {inner}), toOwn(surface.client));
    const bool isDrawn = offscreen.waitForRepaint(progress, watch, processID);
    return isDrawn ? readPixmap(connection, surface, surface.visible) : std::nullopt;
  }
  return std::nullopt;
}

/// Where decorations are on the screen alone, there is one way to a whole picture. A compositing manager that hands out
/// such pictures itself would be asked before. Elsewhere, tries the ways that there are, the surest first:
/// 1. the pixmap that a compositing manager keeps of every window,
/// 2. the one that the server keeps of a window with an alpha channel; both whatever covers the window;
/// 3. the screen, where nothing covers the window and nothing comes over it meanwhile;
/// 4. a pixmap that the window is drawn into for us, out of sight, when no other program is having that done;
/// 5. such a pixmap, when the other program is done with its own.
std::optional<BandedPicture> readSurface(XConnection& connection, const Surface& surface, StructureWatch& watch,
                                         std::int32_t processID) {
  if (surface.decorationPlace == DecorationPlace::onScreen) return readWithDecoration(connection, surface, watch);
  if (isKeptInMemory(connection, surface)) {
    if (auto picture = readPixmap(connection, surface, surface.visible)) return picture;
  }
  watch.update();
  watch.forgetOthers();
  if (hiddenParts(connection, surface).empty()) {
    if (auto picture = readScreen(connection, surface, watch)) return picture;
  }
  return watch.hasChanged() ? std::nullopt : readRepainted(connection, surface, watch, processID);
}

/// True when the window fills all that is wanted of it. The parts of an outline do not overlap.
bool isRectangular(const Surface& surface) {
  const auto area = [](const PixelRect& rect) { return std::int64_t{rect.width} * rect.height; };
  auto left = area(surface.visible);
  for (const auto& part : surface.outline) left -= area(part);
  return left <= 0;
}

}  // namespace

std::optional<BandedPicture> captureWindow(XConnection& connection, const ManagedWindow& window,
                                           StructureWatch& watch) {
  const auto surface = window.isOnScreen ? surfaceOf(connection, window) : std::nullopt;
  if (!surface) return std::nullopt;
  auto picture = readSurface(connection, *surface, watch, window.processID);
  watch.update();
  if (watch.hasChanged()) return std::nullopt;
  if (!picture || isRectangular(*surface)) return picture;
  auto shape = surface->outline;
  for (auto& part : shape) part = movedBy(part, -surface->visible.x, -surface->visible.y);
  const auto whole = imaging::joined(*picture);
  return whole ? inOnePiece(cutToShape(*whole, shape)) : std::nullopt;
}

}  // namespace tavik::platform::x11
