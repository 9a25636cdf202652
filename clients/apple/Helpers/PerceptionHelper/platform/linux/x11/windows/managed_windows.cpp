#include "platform/linux/x11/windows/managed_windows.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include <xcb/shape.h>

#include "platform/linux/x11/server/selection_owner.h"
#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/windows/outer_rect.h"
#include "platform/linux/x11/windows/window_cover.h"
#include "platform/linux/x11/windows/window_traits.h"
#include "platform/linux/x11/windows/window_tree.h"

namespace tavik::platform::x11 {
namespace {

/// Room for a list of 4096 windows.
constexpr std::uint32_t kListBytes = kWordBytes * 4096;

/// What the root window and the server say.
struct RootState {
  std::vector<xcb_window_t> windows = {};   ///< managed, the oldest first
  std::vector<xcb_window_t> children = {};  ///< of the root, bottom to top
  xcb_window_t active = XCB_NONE;           ///< a managed window or its frame
  std::optional<std::uint32_t> workspace = {};
  std::vector<XClient> clients = {};
  bool decorationsAreOnScreen = false;  ///< and not in the frames
};

/// A window manager that speaks EWMH.
struct WindowManager {
  xcb_window_t checkWindow = XCB_NONE;
  std::string name = {};
};

/// The root's property outlives the manager; the window that it names, and that names itself in turn, does not.
std::optional<WindowManager> runningManager(XConnection& connection, const PropertyValue& rootsCheck) {
  const auto window = firstWord(rootsCheck, XCB_ATOM_WINDOW);
  if (!window) return std::nullopt;
  const auto check = requestProperty(connection, *window, connection.atom(Atom::supportingWMCheck));
  const auto name = requestProperty(connection, *window, connection.atom(Atom::wmName));
  const bool namesItself = firstWord(property(connection, check), XCB_ATOM_WINDOW) == window;
  WindowManager manager{.checkWindow = *window, .name = textOf(property(connection, name))};
  return namesItself ? std::optional(std::move(manager)) : std::nullopt;
}

/// True for a manager that, while it is the compositing one as well, paints title bars and borders straight on the
/// screen, and leaves those of its frames empty. Nothing else tells it from the others, which paint in their frames.
bool paintsOnScreen(XConnection& connection, const WindowManager& manager) {
  if (manager.name != "KWin") return false;
  const auto clientOf = [&](xcb_window_t window) { return window & ~connection.setup().resource_id_mask; };
  const auto compositor = selectionOwner(connection, Atom::compositingManager);
  return compositor != XCB_NONE && clientOf(compositor) == clientOf(manager.checkWindow);
}

/// The child of the root that has the keyboard focus, or in which it is.
xcb_window_t focusedTopLevel(XConnection& connection) {
  const auto focus = connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.xcb()));
  if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT) return XCB_NONE;
  return framesOf(connection, {focus->focus}).front();
}

RootState readRoot(XConnection& connection) {
  const auto ask = [&](Atom atom) {
    return requestProperty(connection, connection.root(), connection.atom(atom), kListBytes);
  };
  const auto check = ask(Atom::supportingWMCheck);
  const auto list = ask(Atom::clientList);
  const auto active = ask(Atom::activeWindow);
  const auto workspace = ask(Atom::currentDesktop);
  const auto tree = xcb_query_tree(connection.xcb(), connection.root());
  RootState root{.clients = clients(connection)};
  if (const auto reply = connection.reply(xcb_query_tree_reply, tree)) root.children = childrenOfReply(*reply);
  const auto manager = runningManager(connection, property(connection, check));
  const auto managed = property(connection, list);
  // XWayland's manager in Weston keeps no list.
  root.windows = manager && managed.type != XCB_ATOM_NONE ? words(managed, XCB_ATOM_WINDOW)
                                                          : clientsBelow(connection, root.children);
  if (manager) {
    root.active = firstWord(property(connection, active), XCB_ATOM_WINDOW).value_or(XCB_NONE);
    root.workspace = firstWord(property(connection, workspace), XCB_ATOM_CARDINAL);
    root.decorationsAreOnScreen = paintsOnScreen(connection, *manager);
  }
  const bool isNamed = std::ranges::find(root.windows, root.active) != root.windows.end();
  if (!isNamed) root.active = focusedTopLevel(connection);
  return root;
}

/// All questions about one window, in flight at once.
struct WindowQuery {
  xcb_get_window_attributes_cookie_t attributes = {};
  xcb_get_geometry_cookie_t geometry = {};
  xcb_translate_coordinates_cookie_t origin = {};
  xcb_get_geometry_cookie_t frame = {};
  xcb_get_property_cookie_t title = {};
  xcb_get_property_cookie_t icccmTitle = {};
  xcb_get_property_cookie_t wmClass = {};
  xcb_get_property_cookie_t processID = {};
  xcb_get_property_cookie_t clientMachine = {};
  xcb_get_property_cookie_t states = {};
  xcb_get_property_cookie_t types = {};
  xcb_get_property_cookie_t workspace = {};
  xcb_get_property_cookie_t gtkApplicationID = {};
  xcb_get_property_cookie_t gtkFrameExtents = {};
  xcb_get_property_cookie_t frameExtents = {};
  xcb_get_property_cookie_t icccmState = {};
};

WindowQuery requestWindow(XConnection& connection, xcb_window_t client, xcb_window_t frame) {
  auto* const xcb = connection.xcb();
  const auto ask = [&](Atom atom) { return requestProperty(connection, client, connection.atom(atom)); };
  return {.attributes = xcb_get_window_attributes(xcb, client),
          .geometry = xcb_get_geometry(xcb, client),
          .origin = xcb_translate_coordinates(xcb, client, connection.root(), 0, 0),
          .frame = xcb_get_geometry(xcb, frame),
          .title = ask(Atom::wmName),
          .icccmTitle = requestProperty(connection, client, XCB_ATOM_WM_NAME),
          .wmClass = requestProperty(connection, client, XCB_ATOM_WM_CLASS),
          .processID = ask(Atom::wmPID),
          .clientMachine = requestProperty(connection, client, XCB_ATOM_WM_CLIENT_MACHINE),
          .states = ask(Atom::wmState),
          .types = ask(Atom::wmWindowType),
          .workspace = ask(Atom::wmDesktop),
          .gtkApplicationID = ask(Atom::gtkApplicationID),
          .gtkFrameExtents = ask(Atom::gtkFrameExtents),
          .frameExtents = ask(Atom::frameExtents),
          .icccmState = ask(Atom::icccmState)};
}

/// The process that the window itself claims to belong to.
std::int32_t claimedProcess(const PropertyValue& value) {
  return std::max(0, static_cast<std::int32_t>(firstWord(value, XCB_ATOM_CARDINAL).value_or(0)));
}

void readTexts(XConnection& connection, const WindowQuery& query, ManagedWindow& window) {
  window.title = textOf(property(connection, query.title));
  const auto icccmTitle = textOf(property(connection, query.icccmTitle));
  if (window.title.empty()) window.title = icccmTitle;
  auto [instance, className] = wmClass(property(connection, query.wmClass));
  window.instanceName = std::move(instance);
  window.className = std::move(className);
  window.gtkApplicationID = textOf(property(connection, query.gtkApplicationID));
}

/// The rectangles of the client and of its frame; false when one of them is gone.
bool readGeometry(XConnection& connection, const WindowQuery& query, ManagedWindow& window) {
  const auto geometry = connection.reply(xcb_get_geometry_reply, query.geometry);
  const auto origin = connection.reply(xcb_translate_coordinates_reply, query.origin);
  const auto frame = connection.reply(xcb_get_geometry_reply, query.frame);
  if (!geometry || !origin || !frame) return false;
  window.clientRect = {.x = origin->dst_x, .y = origin->dst_y, .width = geometry->width, .height = geometry->height};
  window.frameRect = outerRect(*frame);
  return true;
}

/// ICCCM, section 4.1.3.1.
constexpr std::uint32_t kIconicState = 3;

WindowHints readHints(XConnection& connection, const WindowQuery& query, bool isViewable) {
  return {
      .isViewable = isViewable,
      .states = words(property(connection, query.states), XCB_ATOM_ATOM),
      .types = words(property(connection, query.types), XCB_ATOM_ATOM),
      .workspace = firstWord(property(connection, query.workspace), XCB_ATOM_CARDINAL),
      .gtkExtents = words(property(connection, query.gtkFrameExtents), XCB_ATOM_CARDINAL),
      .decoration = words(property(connection, query.frameExtents), XCB_ATOM_CARDINAL),
      .isIconic = firstWord(property(connection, query.icccmState), connection.atom(Atom::icccmState)) == kIconicState};
}

/// False for a window whose input shape has no part.
bool takesInput(XConnection& connection, xcb_window_t window) {
  if (!connection.hasExtension(xcb_shape_id)) return true;
  const auto cookie = xcb_shape_get_rectangles(connection.xcb(), window, XCB_SHAPE_SK_INPUT);
  const auto shape = connection.reply(xcb_shape_get_rectangles_reply, cookie);
  return !shape || shape->rectangles_len > 0;
}

std::optional<ManagedWindow> receiveWindow(XConnection& connection, const WindowQuery& query, xcb_window_t client,
                                           xcb_window_t frame, const RootState& root) {
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes);
  ManagedWindow window{.client = client, .frame = frame};
  // Also of a window that is gone, every reply is taken: xcb searches those left behind for each later one.
  const bool isThere = readGeometry(connection, query, window) && attributes;
  readTexts(connection, query, window);
  const auto claimed = claimedProcess(property(connection, query.processID));
  const auto known = processOfWindow(root.clients, connection.setup().resource_id_mask, client);
  window.isOfOtherMachine = isOfOtherMachine(textOf(property(connection, query.clientMachine)), claimed, known);
  window.processID = known != 0 || window.isOfOtherMachine ? known : claimed;
  window.isActive = client == root.active || frame == root.active;
  const bool isViewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  auto hints = readHints(connection, query, isViewable);
  if (isViewable && belongsElsewhere(hints, root.workspace)) hints.takesInput = takesInput(connection, frame);
  applyHints(window, hints, connection.atoms(), root.workspace);
  if (root.decorationsAreOnScreen) window.decorationPlace = DecorationPlace::onScreen;
  return isThere ? std::optional(std::move(window)) : std::nullopt;
}

/// The records of these windows in their order, without those that are gone.
std::vector<ManagedWindow> describe(XConnection& connection, const std::vector<xcb_window_t>& windows,
                                    const RootState& root) {
  const auto frames = framesOf(connection, windows);
  std::vector<WindowQuery> queries;
  for (std::size_t i = 0; i < windows.size(); ++i) queries.push_back(requestWindow(connection, windows[i], frames[i]));
  std::vector<ManagedWindow> described;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (auto window = receiveWindow(connection, queries[i], windows[i], frames[i], root)) {
      described.push_back(*std::move(window));
    }
  }
  return described;
}

}  // namespace

Desktop readDesktop(XConnection& connection) {
  if (!connection.isReachable()) return {};
  auto root = readRoot(connection);
  Desktop desktop{.windows = describe(connection, root.windows, root), .topLevels = std::move(root.children)};
  separateOtherMachines(desktop.windows, connection.setup().resource_id_mask);
  const auto active = std::ranges::find_if(desktop.windows, [](const auto& window) { return window.isActive; });
  desktop.activeProcessID = active != desktop.windows.end()
                                ? active->processID
                                : processOfWindow(root.clients, connection.setup().resource_id_mask, root.active);
  desktop.clients = std::move(root.clients);
  return desktop;
}

namespace {

/// Finds out which of the decorations that are on the screen alone something hides.
void findHiddenDecorations(XConnection& connection, std::vector<ManagedWindow>& windows,
                           const std::vector<xcb_window_t>& topLevels) {
  const auto isOnScreenAlone = [](const auto& window) { return window.decorationPlace == DecorationPlace::onScreen; };
  if (std::ranges::none_of(windows, isOnScreenAlone)) return;
  const auto outlines = outlinesOf(connection, topLevels);
  for (auto& window : windows) {
    const auto own = std::ranges::find(topLevels, window.frame);
    if (!isOnScreenAlone(window) || own == topLevels.end()) continue;
    const auto above = std::span(outlines).subspan(static_cast<std::size_t>(own - topLevels.begin()) + 1);
    const auto decoration = subtract({visibleRect(window)}, window.clientRect);
    if (!hiddenParts(connection, above, decoration).empty()) window.decorationPlace = DecorationPlace::hidden;
  }
}

}  // namespace

/// By the stacking of the frames, which _NET_CLIENT_LIST_STACKING repeats where a window manager sets it.
std::vector<ManagedWindow> managedWindows(XConnection& connection) {
  auto [windows, topLevels, clients, activeProcessID] = readDesktop(connection);
  const auto height = [&topLevels = topLevels](const ManagedWindow& window) {
    return std::ranges::find(topLevels, window.frame) - topLevels.begin();
  };
  std::ranges::stable_sort(windows, [&](const auto& left, const auto& right) { return height(left) > height(right); });
  findHiddenDecorations(connection, windows, topLevels);
  return std::move(windows);
}

}  // namespace tavik::platform::x11
