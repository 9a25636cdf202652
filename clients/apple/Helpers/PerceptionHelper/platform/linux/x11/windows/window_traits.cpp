#include "platform/linux/x11/windows/window_traits.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <utility>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

constexpr std::int32_t kBelowLayer = -1;
constexpr std::int32_t kAboveLayer = 1;
constexpr std::int32_t kDockLayer = 2;

struct HintReader {
  const WindowHints& hints;
  const AtomTable& atoms;

  /// A client lists several types, the others for window managers that do not know the first.
  bool hasType(Atom type) const { return contains(hints.types, type); }
  bool hasType(std::initializer_list<Atom> types) const {
    return std::ranges::any_of(types, [this](Atom type) { return hasType(type); });
  }
  bool hasState(Atom state) const { return contains(hints.states, state); }

 private:
  bool contains(const std::vector<std::uint32_t>& list, Atom atom) const {
    const auto number = atoms[static_cast<std::size_t>(atom)];
    return number != XCB_ATOM_NONE && std::ranges::find(list, number) != list.end();
  }
};

std::int32_t layerOf(const HintReader& window) {
  if (window.hasType(Atom::typeDesktop)) return kDesktopLayer;
  if (window.hasType(Atom::typeDock)) return kDockLayer;
  if (window.hasState(Atom::stateAbove)) return kAboveLayer;
  return window.hasState(Atom::stateBelow) ? kBelowLayer : 0;
}

/// True for a window on a workspace that is not shown. A window that is shown is on one that some monitor shows;
/// compositing managers keep the others viewable, Mutter as iconic ones, KWin where nobody can click them.
bool isOnOtherWorkspace(const WindowHints& hints, std::optional<std::uint32_t> currentWorkspace) {
  const bool isShown = hints.isViewable && !hints.isIconic && hints.takesInput;
  return !isShown && belongsElsewhere(hints, currentWorkspace);
}

/// A minimized window that a compositing manager keeps viewable. A shaded one is iconic as well, and a tab behind
/// others is hidden as well.
bool isMinimized(const WindowHints& hints, const HintReader& reader) {
  return hints.isIconic && reader.hasState(Atom::stateHidden);
}

std::optional<FrameExtents> extentsOf(const std::vector<std::uint32_t>& extents) {
  if (extents.size() != 4 || *std::ranges::max_element(extents) > imaging::kLongestSurfaceSide) return std::nullopt;
  return FrameExtents{.left = static_cast<std::int32_t>(extents[0]),
                      .right = static_cast<std::int32_t>(extents[1]),
                      .top = static_cast<std::int32_t>(extents[2]),
                      .bottom = static_cast<std::int32_t>(extents[3])};
}

/// The client with its decorations. The frame may be larger, for borders that can be grabbed but not seen, and the
/// manager's word is not always up to date, so neither is enough without the other.
PixelRect decoratedRect(const ManagedWindow& window) {
  const auto& client = window.clientRect;
  if (window.decorationPlace == DecorationPlace::hidden) return client;
  if (!window.decoration) return window.frameRect;
  const auto& [left, right, top, bottom] = *window.decoration;
  const auto decorated = intersection({.x = client.x - left,
                                       .y = client.y - top,
                                       .width = client.width + left + right,
                                       .height = client.height + top + bottom},
                                      window.frameRect);
  return isEmpty(decorated) ? window.frameRect : decorated;
}

}  // namespace

bool belongsElsewhere(const WindowHints& hints, std::optional<std::uint32_t> currentWorkspace) {
  constexpr std::uint32_t kAllWorkspaces = 0xFFFFFFFF;
  return currentWorkspace && hints.workspace && *hints.workspace != kAllWorkspaces &&
         *hints.workspace != *currentWorkspace;
}

void applyHints(ManagedWindow& window, const WindowHints& hints, const AtomTable& atoms,
                std::optional<std::uint32_t> currentWorkspace) {
  const HintReader reader{.hints = hints, .atoms = atoms};
  window.isOnOtherWorkspace = isOnOtherWorkspace(hints, currentWorkspace);
  window.isOnScreen = hints.isViewable && !reader.hasState(Atom::stateShaded) && !isMinimized(hints, reader);
  window.layer = layerOf(reader);
  window.isRegular =
      !reader.hasState(Atom::stateSkipTaskbar) &&
      !reader.hasType({Atom::typeDesktop, Atom::typeDock, Atom::typeSplash, Atom::typeNotification, Atom::typeUtility});
  window.gtkExtents = extentsOf(hints.gtkExtents).value_or(FrameExtents{});
  window.decoration = extentsOf(hints.decoration);
}

void separateOtherMachines(std::vector<ManagedWindow>& windows, std::uint32_t resourceMask) {
  std::set<std::uint32_t> clients;
  for (const auto& window : windows) {
    if (window.isOfOtherMachine) clients.insert(window.client & ~resourceMask);
  }
  for (auto& window : windows) {
    const auto client = window.client & ~resourceMask;
    if (!clients.contains(client)) continue;
    window.relayProcessID = std::exchange(window.processID, static_cast<std::int32_t>(0 - client));
  }
}

PixelRect visibleRect(const ManagedWindow& window) {
  const auto frame = decoratedRect(window);
  const auto& client = window.clientRect;
  // A side on which the window manager adds nothing is drawn by the client, with its margin.
  const auto margin = [](std::int32_t decoration, std::int32_t extent) { return decoration > 0 ? 0 : extent; };
  const auto left = margin(client.x - frame.x, window.gtkExtents.left);
  const auto top = margin(client.y - frame.y, window.gtkExtents.top);
  const auto right = margin(frame.x + frame.width - client.x - client.width, window.gtkExtents.right);
  const auto bottom = margin(frame.y + frame.height - client.y - client.height, window.gtkExtents.bottom);
  const PixelRect visible{.x = frame.x + left,
                          .y = frame.y + top,
                          .width = frame.width - left - right,
                          .height = frame.height - top - bottom};
  return isEmpty(visible) ? frame : visible;
}

}  // namespace tavik::platform::x11
